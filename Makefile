# The two commands a newcomer needs: `make demo` and `make test`.
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: demo test setup clean

setup:
	@./scripts/setup.sh

demo: setup
	@cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DVELMORA_BUILD_TESTS=OFF >/dev/null
	@cmake --build build/release -j $(JOBS) --target velmora_cli
	@./scripts/demo.sh build/release

test: setup
	@cmake -S . -B build/test -DCMAKE_BUILD_TYPE=Debug -DVELMORA_SANITIZE=ON >/dev/null
	@cmake --build build/test -j $(JOBS)
	@cd build/test && ctest --output-on-failure -j $(JOBS)

clean:
	rm -rf build
