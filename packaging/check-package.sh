#!/usr/bin/env bash
# Checks the Debian package the way a user meets it: lintian accepts it, and the programs
# unpacked into a scratch folder run from any folder with a fresh HOME, seed the per-user
# program folder and keep their session there, without writing into the installed tree.
# Usage: packaging/check-package.sh PACKAGE.deb
set -euo pipefail

deb=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
fail() { echo "check-package: $*" >&2; exit 1; }

echo "== lintian"
lintian --fail-on error --display-level ">=warning" "$deb"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Checked here even while the package does not carry them yet (no desktop program).
echo "== desktop entry, metainfo, icon"
desktop-file-validate "$here/org.lkmcu.lkwriter.desktop"
appstreamcli validate --no-net --pedantic "$here/org.lkmcu.lkwriter.metainfo.xml" >/dev/null
rsvg-convert -w 48 -h 48 "$here/org.lkmcu.lkwriter.svg" -o "$scratch/icon.png"
root=$scratch/root
dpkg-deb -x "$deb" "$root"
touch "$scratch/unpacked"
sleep 1  # a later write into the tree shows as newer than the mark

echo "== manual pages"
for page in "$root"/usr/share/man/man1/*.1.gz; do
  warnings=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "$(basename "$page"): $warnings"
done

echo "== udev rule"
rule=$(find "$root" -path '*/udev/rules.d/70-lkwriter.rules')
[ -n "$rule" ] || fail "no udev rule in the package"
grep -q 'TAG+="uaccess"' "$rule" || fail "the udev rule does not tag the writer with uaccess"
if grep -Eq 'MODE="0?666"|GROUP=' "$rule"; then fail "the udev rule opens the writer to everyone or to a group"; fi

echo "== first run with a fresh HOME"
cli=$root/usr/bin/lkwriter-cli
export HOME=$scratch/home
mkdir -p "$HOME" "$scratch/elsewhere"
unset XDG_DATA_HOME LKWRITER_HOME
cd "$scratch/elsewhere"
user=$HOME/.local/share/lkwriter

probe=$("$cli" --device sim probe 2>&1) || fail "probe on the simulated writer: $probe"
grep -q 'v3\.' <<<"$probe" || fail "probe did not print the writer's version: $probe"
cmp -s "$user/dat/qvmc.ini" "$root/usr/share/lkwriter/dat/qvmc.ini" || fail "per-user folder not seeded"

example=$root/usr/share/lkwriter/examples/qvm50p99.hex
"$cli" --chip QVM50P99 convert "$example" "$scratch/elsewhere/out.lkx"
[ -s out.lkx ] || fail "convert wrote no project"
"$cli" --chip QVM50P99 show out.lkx | grep -q '^Checksum:' || fail "the converted project does not open"
tr -d "\r" <"$user/dat/data.dat" | grep -qx "File[0-4]=$example" || fail "the recent files are not kept in $user"

changed=$(find "$root" -newer "$scratch/unpacked")
[ -z "$changed" ] || fail "the programs wrote into the installed tree: $changed"
echo "package checked: $(basename "$deb")"
