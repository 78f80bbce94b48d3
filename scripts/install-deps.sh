#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need. Idempotent: packages
# already present are not touched, and apt is not called at all when nothing is missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev libhidapi-dev libgtest-dev libgmock-dev libcli11-dev libbenchmark-dev
  xvfb xauth fonts-wqy-microhei clang libclang-rt-14-dev binutils
  lintian desktop-file-utils appstream librsvg2-bin
  libsqlite3-dev sqlite3 libpq-dev postgresql-15 nlohmann-json3-dev libssl-dev libsodium-dev ccache
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
