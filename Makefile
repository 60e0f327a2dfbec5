# The entry points: `make run`, `make test` and `make test-desktops` (the end-to-end checks under every
# window manager of the desktop matrix, as a table). Each installs what it needs first.
# `make install` (DESTDIR and CMAKE_INSTALL_PREFIX honoured) and `make package` (a Debian package in
# build/) install and package the program.
JOBS ?= $(shell nproc)
SOURCES = $(shell find src tests bench fuzz -name '*.cpp' -o -name '*.h' 2>/dev/null)

# Seconds each fuzz target runs in `make fuzz`; `make test` gives each a few.
FUZZ_SECONDS ?= 60

.PHONY: run test test-desktops build deps test-deps desktop-deps fuzz-deps package-deps install package bench bench-deps unit-asan fuzz format format-check clean

run: build
	./build/src/vantril

test: test-deps format-check build
	ctest --preset default -j $(JOBS)
	$(MAKE) unit-asan
	$(MAKE) fuzz FUZZ_SECONDS=3

test-desktops: desktop-deps build
	./scripts/test-desktops.sh

build: deps
	cmake --preset default >/dev/null
	cmake --build --preset default -j $(JOBS)

install: build
	DESTDIR="$(DESTDIR)" cmake --install build $(if $(CMAKE_INSTALL_PREFIX),--prefix "$(CMAKE_INSTALL_PREFIX)")

package: package-deps build
	cd build && cpack --config CPackConfig.cmake

unit-asan: test-deps
	cmake --preset asan >/dev/null
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)

# Its own clang build in build-fuzz, so that it never slows or changes the normal build.
fuzz: fuzz-deps
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz -j $(JOBS)
	./scripts/fuzz.sh $(FUZZ_SECONDS)

deps:
	@./scripts/install-deps.sh build

# Figures, not tests: the program optimised as a package is, beside a minimal Qt and a minimal Xlib window,
# on a virtual X server of its own. bench/README.md says what each figure is; BENCH_IDLE_S=10 BENCH_RUNS=3
# BENCH_SAMPLES=5 BENCH_CYCLES=100 make a quick run.
bench: bench-deps
	cmake --preset bench >/dev/null
	cmake --build --preset bench -j $(JOBS) --target benchmarks
	tests/x11/with-x-session.sh bench/run.sh build-bench

bench-deps:
	@./scripts/install-deps.sh bench

test-deps:
	@./scripts/install-deps.sh test

desktop-deps:
	@./scripts/install-deps.sh desktops

fuzz-deps:
	@./scripts/install-deps.sh fuzz

package-deps:
	@./scripts/install-deps.sh package

format:
	clang-format -i $(SOURCES)

format-check: test-deps
	@clang-format --dry-run --Werror $(SOURCES) && echo "Formatting: ok"

clean:
	rm -rf build build-asan build-fuzz build-bench
