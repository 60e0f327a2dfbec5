# The two entry points: `make run` and `make test`. Both install what they need first.
# `make install` (DESTDIR and CMAKE_INSTALL_PREFIX honoured) and `make package` (a Debian package in
# build/) install and package the program.
JOBS ?= $(shell nproc)
SOURCES = $(shell find src tests bench -name '*.cpp' -o -name '*.h' 2>/dev/null)

.PHONY: run test build deps test-deps package-deps install package unit-asan format format-check clean

run: build
	./build/src/vantril

test: test-deps format-check build
	ctest --preset default -j $(JOBS)
	$(MAKE) unit-asan

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

deps:
	@./scripts/install-deps.sh build

test-deps:
	@./scripts/install-deps.sh test

package-deps:
	@./scripts/install-deps.sh package

format:
	clang-format -i $(SOURCES)

format-check: test-deps
	@clang-format --dry-run --Werror $(SOURCES) && echo "Formatting: ok"

clean:
	rm -rf build build-asan
