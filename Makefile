# The two entry points: `make run` and `make test`. Both install what they need first.
JOBS ?= $(shell nproc)
SOURCES = $(shell find src tests bench -name '*.cpp' -o -name '*.h' 2>/dev/null)

.PHONY: run test build deps test-deps unit-asan format format-check clean

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

test-deps:
	@./scripts/install-deps.sh test

format:
	clang-format -i $(SOURCES)

format-check: test-deps
	@clang-format --dry-run --Werror $(SOURCES) && echo "Formatting: ok"

clean:
	rm -rf build build-asan
