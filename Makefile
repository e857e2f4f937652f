# A thin front of the CMake presets. `make demo` and `make test` do their own set-up on a fresh machine.

FUZZ_SECONDS ?= 300

.PHONY: all setup release check test demo bench fuzz format clean

all: release

setup:
	@scripts/setup

release: setup
	@cmake --preset release --log-level=WARNING
	@cmake --build --preset release

check: setup
	@cmake --preset check --log-level=WARNING
	@cmake --build --preset check

test: check
	@ctest --preset check
	@FUZZ_SEED=1 scripts/fuzz 5

demo: release
	@scripts/demo

bench: release
	@scripts/bench

fuzz: setup
	@scripts/fuzz $(FUZZ_SECONDS)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf build out
