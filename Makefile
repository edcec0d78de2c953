# The two commands a newcomer needs: `make demo` and `make test`; `make package` makes the
# Debian package.
MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: demo test python package windows setup clean

setup:
	@./scripts/setup.sh

demo: setup
	@cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DVELMORA_BUILD_TESTS=OFF -DVELMORA_BUILD_BENCH=OFF -DVELMORA_PREVIEW=ON >/dev/null
	@cmake --build build/release -j $(JOBS) --target velmora_cli
	@./scripts/demo.sh build/release

test: setup
	@cmake -S . -B build/test -DCMAKE_BUILD_TYPE=Debug -DVELMORA_SANITIZE=ON -DVELMORA_PREVIEW=ON >/dev/null
	@cmake --build build/test -j $(JOBS)
	@cd build/test && ctest --output-on-failure -j $(JOBS)
	@cmake -S . -B build/tsan -DCMAKE_BUILD_TYPE=Debug -DVELMORA_TSAN=ON -DVELMORA_PREVIEW=OFF -DVELMORA_BUILD_BENCH=OFF >/dev/null
	@cmake --build build/tsan -j $(JOBS) --target test_threads record_walk
	@cd build/tsan && ctest --output-on-failure -R 'ConcurrentModels|CoreWithoutPreview'
	@$(MAKE) python
	@./scripts/test-python.sh build/release build/python

# The Python package (build/python/velmora, with PYTHONPATH=build/python) and the Blender add-on
# (build/python/velmora_blender.zip), on the C interface of the Release build of `make demo`.
python: setup
	@cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DVELMORA_BUILD_TESTS=OFF -DVELMORA_BUILD_BENCH=OFF -DVELMORA_PREVIEW=ON >/dev/null
	@cmake --build build/release -j $(JOBS) --target velmora_c velmora_cli velmora_make_samples
	@./scripts/python.sh build/release build/python

# The same Release build as the demo's, packed by CPack into build/release/velmora_<version>_amd64.deb.
package: setup
	@cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DVELMORA_BUILD_TESTS=OFF -DVELMORA_BUILD_BENCH=OFF -DVELMORA_PREVIEW=ON >/dev/null
	@cmake --build build/release -j $(JOBS) --target velmora velmora_cli velmora_c
	@cd build/release && rm -f velmora_*.deb && cpack -G DEB >/dev/null
	@ls build/release/velmora_*.deb

# The Windows build, cross-compiled here with MinGW-w64: tests under Wine, then
# build/windows/velmora-<version>-windows-x86_64.zip, checked from the unpacked zip.
windows:
	@JOBS=$(JOBS) ./scripts/windows.sh

clean:
	rm -rf build
