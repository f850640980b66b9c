# The two entry points of the README: `make demo` and `make test`.
# Both install what is missing (as root, on Debian 12), then build with CMake.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)

.PHONY: deps build demo test test-sanitize clean

deps:
	scripts/install-deps.sh

build: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release -DWARNINGS_AS_ERRORS=ON
	cmake --build $(BUILD_DIR) -j $(JOBS)

demo: build
	$(BUILD_DIR)/taskdata-migrate -p -O out examples/display
	$(BUILD_DIR)/taskdata-preview out

# The README's picture of the demo's preview page, rendered by headless
# Chromium (root needs --no-sandbox).
.PHONY: screenshot
screenshot: demo
	chromium --headless --no-sandbox --disable-gpu --hide-scrollbars \
		--force-device-scale-factor=1 --window-size=1340,2300 \
		--screenshot=docs/preview.png file://$(CURDIR)/out/preview.html

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure --no-tests=error -j $(JOBS)

# Every test again with AddressSanitizer and UndefinedBehaviorSanitizer.
SANITIZE_DIR ?= build-sanitize
test-sanitize: deps
	cmake -S . -B $(SANITIZE_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DWARNINGS_AS_ERRORS=ON -DSANITIZE=ON
	cmake --build $(SANITIZE_DIR) -j $(JOBS)
	ctest --test-dir $(SANITIZE_DIR) --output-on-failure --no-tests=error -j $(JOBS)

# Line and branch coverage of src/ by every test: an unoptimised build with gcov
# instrumentation in build-coverage, its tests, then gcovr's summary (also
# written to build-coverage/coverage.txt, file by file). One test is left out:
# it runs the tool as an unprivileged user, who cannot write the counters, and
# the tool's runtime says so on standard error, which the test requires empty.
COVERAGE_DIR ?= build-coverage
.PHONY: coverage
coverage: deps
	cmake -S . -B $(COVERAGE_DIR) -DCMAKE_BUILD_TYPE=Debug -DWARNINGS_AS_ERRORS=ON -DCOVERAGE=ON
	cmake --build $(COVERAGE_DIR) -j $(JOBS)
	find $(COVERAGE_DIR) -name '*.gcda' -delete
	ctest --test-dir $(COVERAGE_DIR) --output-on-failure --no-tests=error -j $(JOBS) \
		-E '^HostileTree\.UnreadableFilesAndDirectories$$'
	gcovr --root . --filter src/ --object-directory $(COVERAGE_DIR) -j $(JOBS) \
		--exclude-unreachable-branches --exclude-throw-branches \
		--txt $(COVERAGE_DIR)/coverage.txt --print-summary

# The build for the display's processor (aarch64-linux-gnu) into build-arm64:
# `make arm` installs the cross compiler, the arm64 libraries and qemu
# (scripts/install-cross-deps.sh), then builds. `make test-arm` runs every
# test of that build under qemu and compares the sets its tool writes with
# those of the native build's tool; it installs nothing, and a missing package
# stops it with a message that names the install script.
ARM_DIR ?= build-arm64
ARM_CONFIGURE = cmake -S . -B $(ARM_DIR) -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/aarch64-linux-gnu.cmake \
	-DCMAKE_BUILD_TYPE=Release -DWARNINGS_AS_ERRORS=ON -DTDM_NATIVE_BUILD=$(abspath $(BUILD_DIR))
.PHONY: arm test-arm
arm:
	scripts/install-cross-deps.sh
	$(ARM_CONFIGURE)
	cmake --build $(ARM_DIR) -j $(JOBS)

test-arm: build
	$(ARM_CONFIGURE)
	cmake --build $(ARM_DIR) -j $(JOBS)
	ctest --test-dir $(ARM_DIR) --output-on-failure --no-tests=error -j $(JOBS)

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR) $(COVERAGE_DIR) $(ARM_DIR) out

# Benchmarks print their figures; they are never part of `make test`.
.PHONY: bench
bench: build
	set -e; for b in $(BUILD_DIR)/bench/*/*_bench; do echo "== $$b"; $$b; done

# Runs every libFuzzer target for FUZZ_SECONDS each, built with clang into
# build-fuzz; never part of `make test`, which only replays the corpora.
FUZZ_SECONDS ?= 60
.PHONY: fuzz
fuzz: deps
	scripts/fuzz.sh $(FUZZ_SECONDS)

# Fails when a C++ source is not formatted as .clang-format says.
.PHONY: format-check
format-check: deps
	git ls-files '*.cpp' '*.h' | xargs -d '\n' clang-format --dry-run --Werror
