# The two commands a new machine needs: `make run` and `make test`.
# Both install missing Debian packages first (scripts/install-deps.sh is idempotent).
BUILD      ?= build
PKG_BUILD  ?= build-package
PACKAGE_WERROR ?= OFF
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
JOBS       ?= $(shell nproc)

.PHONY: all deps configure build test package run fuzz bench soak clean format

all: build

deps:
	@bash scripts/install-deps.sh

# ccache, when present, keeps rebuilds (and several work trees of one repository) cheap.
CCACHE     := $(shell command -v ccache 2>/dev/null)
LAUNCHER   := $(if $(CCACHE),-DCMAKE_CXX_COMPILER_LAUNCHER=$(CCACHE))
export CCACHE_BASEDIR := $(CURDIR)
export CCACHE_NOHASHDIR := 1

$(BUILD)/build.ninja: | deps
	cmake -S . -B $(BUILD) -G Ninja -DLK_WERROR=ON $(LAUNCHER)

configure: deps $(BUILD)/build.ninja

build: configure
	cmake --build $(BUILD) -j $(JOBS)

# Every test, then the package: built with warnings as errors, checked by lintian,
# unpacked and run from a scratch folder with a fresh HOME.
test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS) --timeout 300
	$(MAKE) --no-print-directory package PACKAGE_WERROR=ON
	bash packaging/check-package.sh $(PKG_BUILD)/lkwriter_*.deb

# The Debian package, built as a packager would: Release, Debian's own build flags
# (dpkg-buildflags, read when the folder is first configured), installed under /usr.
package: deps
	eval "$$(dpkg-buildflags --export=sh)" && CXXFLAGS="$$CXXFLAGS $$CPPFLAGS" \
	  cmake -S . -B $(PKG_BUILD) -G Ninja \
	  -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr -DLK_TESTS=OFF \
	  -DLK_WERROR=$(PACKAGE_WERROR)
	cmake --build $(PKG_BUILD) -j $(JOBS)
	rm -f $(PKG_BUILD)/lkwriter_*.deb
	cd $(PKG_BUILD) && cpack -G DEB

# The desktop program on the simulated writer with an example project open. Without a
# display: the chip list, the selected chip, an example project (its first lines) and
# the simulated writer's connection lines from the command line.
run: build
	@if [ -n "$$DISPLAY$$WAYLAND_DISPLAY" ]; then \
	  cd $(BUILD) && ./lkwriter --home . --device sim examples/qvm50p99.lkx; \
	else \
	  echo "No display (DISPLAY and WAYLAND_DISPLAY are empty): running the command-line demo instead."; \
	  $(BUILD)/lkwriter-cli --home $(BUILD) chips && \
	  $(BUILD)/lkwriter-cli --home $(BUILD) chip && \
	  { $(BUILD)/lkwriter-cli --home $(BUILD) show $(BUILD)/examples/qvm50f96a-eedata.lkx | head -n 12; } && \
	  $(BUILD)/lkwriter-cli --home $(BUILD) --device sim probe && \
	  $(BUILD)/lkwriter-cli --home $(BUILD) --device sim auto $(BUILD)/examples/qvm50p99.lkx; \
	fi

fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -G Ninja -DLK_FUZZ=ON -DLK_WERROR=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(FUZZ_BUILD) -j $(JOBS)
	bash fuzz/run-all.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

bench: build
	bash bench/run-all.sh $(BUILD)

# The production database's full proof: 1,000 kills, 8 processes x 2,000 chips on SQLite
# and on PostgreSQL, a tampered chain.
soak: build
	bash bench/soak.sh $(BUILD) full

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) $(FUZZ_BUILD) $(PKG_BUILD)
