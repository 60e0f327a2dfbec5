# The two entry points: `make run` and `make test`. Both install what they need first.
JOBS ?= $(shell nproc)
SOURCES = $(shell find src tests bench -name '*.cpp' -o -name '*.h' 2>/dev/null)

.PHONY: run test build deps test-deps bench bench-deps unit-asan format format-check clean

run: build
	./build/src/vantril

test: test-deps format-check build
	ctest --preset default -j $(JOBS)
	$(MAKE) unit-asan

build: deps
	cmake --preset default >/dev/null
	cmake --build --preset default -j $(JOBS)

unit-asan: test-deps
	cmake --preset asan >/dev/null
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)

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

format:
	clang-format -i $(SOURCES)

format-check: test-deps
	@clang-format --dry-run --Werror $(SOURCES) && echo "Formatting: ok"

clean:
	rm -rf build build-asan build-bench
