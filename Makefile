# The entry points: `make run`, `make test` and `make test-desktops` (the end-to-end checks under every
# window manager of the desktop matrix, as a table). Each installs what it needs first.
JOBS ?= $(shell nproc)
SOURCES = $(shell find src tests bench -name '*.cpp' -o -name '*.h' 2>/dev/null)

.PHONY: run test test-desktops build deps test-deps desktop-deps unit-asan format format-check clean

run: build
	./build/src/vantril

test: test-deps format-check build
	ctest --preset default -j $(JOBS)
	$(MAKE) unit-asan

test-desktops: desktop-deps build
	./scripts/test-desktops.sh

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

desktop-deps:
	@./scripts/install-deps.sh desktops

format:
	clang-format -i $(SOURCES)

format-check: test-deps
	@clang-format --dry-run --Werror $(SOURCES) && echo "Formatting: ok"

clean:
	rm -rf build build-asan
