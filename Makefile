# The two entry points of the README: `make demo` and `make test`.
# Both install what is missing (as root, on Debian 12), then build with CMake.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)

.PHONY: deps build demo test clean

deps:
	scripts/install-deps.sh

build: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release -DWARNINGS_AS_ERRORS=ON
	cmake --build $(BUILD_DIR) -j $(JOBS)

demo: build
	$(BUILD_DIR)/taskdata-migrate -p -O out examples/display

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure --no-tests=error -j $(JOBS)

clean:
	rm -rf $(BUILD_DIR) out

# Benchmarks print their figures; they are never part of `make test`.
.PHONY: bench
bench: build
	set -e; for b in $(BUILD_DIR)/bench/*/*_bench; do echo "== $$b"; $$b; done

# Fails when a C++ source is not formatted as .clang-format says.
.PHONY: format-check
format-check: deps
	git ls-files '*.cpp' '*.h' | xargs -d '\n' clang-format --dry-run --Werror
