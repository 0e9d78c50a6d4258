# Each of the first two does everything from a fresh machine: packages, configure, build, run.
#   make demo    a complete run on real data
#   make test    the whole test suite
#   make build   optimised build in build/release
#   make bench   what the hot paths cost
#   make asan    the test suite under AddressSanitizer and UBSan
#   make fuzz    every fuzz target for FUZZ_SECONDS (600 unless given) seconds
#   make evaluator  set up the independent evaluator of model files, for the tests (needs Java)
#   make compare OLD=path  every output of this build beside those of another build of the program
#   make tidy    clang-tidy over all sources
.PHONY: demo test build bench asan fuzz evaluator compare tidy format setup clean

demo: build
	@scripts/demo

test: build
	ctest --preset release

build: setup
	cmake --preset release >/dev/null
	cmake --build --preset release

bench: build
	@scripts/bench

asan: setup
	cmake --preset asan >/dev/null
	cmake --build --preset asan
	ctest --preset asan

evaluator: setup
	python3 -m venv .venv-pmml
	.venv-pmml/bin/python3 -m pip install --quiet -r scripts/requirements-pmml.txt

fuzz: export FUZZ_SECONDS ?= 600
fuzz:
	@scripts/setup --fuzz
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz
	@scripts/make-corpus
	@scripts/fuzz

compare: setup
	cmake --preset release >/dev/null
	cmake --build --preset release --target predselect_cli
	tests/apps/compare_programs.py $(OLD) build/release/bin/predselect

tidy:
	@scripts/setup --dev
	cmake --preset release >/dev/null
	@scripts/tidy

format:
	@scripts/setup --dev
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

setup:
	@scripts/setup

clean:
	rm -rf build
