# Each of the first two does everything from a fresh machine: packages, configure, build, run.
#   make demo    a complete run on real data
#   make test    the whole test suite
# Then:
#   make build   optimised build in build/release, with tests and benchmarks
#   make bench   what the hot paths cost
#   make bench-growth  how times grow with categories, cases, columns and lengths of words
#   make bench-plot  draw how the engines' times grow: docs/performance.svg
#   make bench-end  what whole runs cost, in time and memory (OLD=path: beside another build of the program)
#   make bench-scale  what work over parts costs, and how trees of merging grow to a million parts
#   make bench-peers  the same jobs done by this build and by other libraries, in one run
#   make compare OLD=path  every output of this build beside those of another build of the program
#   make asan    the test suite under AddressSanitizer and UBSan
#   make ubsan   the test suite under UBSan with every check of integers (Clang)
#   make tsan    the tests of what works with threads under ThreadSanitizer
#   make fuzz    every fuzz target for FUZZ_SECONDS (600 unless given) seconds
#   make coverage  which branches of engines, model files, states and parser the tests take (Clang)
#   make mutants  the engines changed in small ways, one at a time: a test has to fail
#   make damage  saved states, damaged at random TRIALS (100000 unless given) times: none is read with other numbers
#   make faults  every call to the system and every place of allocation failed in turn, over jobs of every kind
#   make kills   KILLS (1000 unless given) runs ended at random moments, by every signal and want
#   make load    long, wide and odd tables, runs at once and in one process (LOAD_SHARE=0.1: a tenth of the cases)
#   make package  a Debian package and an archive with everything inside, in build/release/packages
#   make check-package  install and run both on a Debian that has nothing else (needs root)
#   make check-exact  exact p-values beside an independent computation, on tables of real data
#   make browser  reports in a real browser: sets up Chromium and its driver, and runs their tests
#   make browser-tools  set up Chromium and its driver alone: `make test` then runs the tests of reports as well
#   make models  set up the readers of exported models that the tests run: evaluators, runtimes, databases
#   make spark   tables in parts on Spark and Dask: sets them up (with Java), and runs their tests
#   make spark-tools  only sets them up: `make test` then runs these tests too
#   make spark-long  the same at 20,000,000 rows in 64 parts, which takes a quarter of an hour
#   make compare-spark  rows a second on Spark and Dask, beside one machine and Spark's own library
#   make databases  set up drivers of databases, for the tests (PostgreSQL where its server is there)
#   make wheel   the Python package for every CPython from 3.10, in build/wheels
#   make check-wheel  install it into clean environments of every CPython found, and run its tests there
#   make test-python-long  the package's tests of memory and leaks, which take minutes and gigabytes
#   make docs    the documentation of the Python package, its notebooks run anew, in build/docs
#   make compare-sklearn  its classifier and selector beside others of scikit-learn, on tables of real data
#   make tidy    clang-tidy over the sources of program and libraries
#   make format  clang-format over all sources
#   make clean   removes everything that was built
.PHONY: demo test program build bench bench-growth bench-plot bench-end bench-scale bench-peers compare check-exact
.PHONY: asan ubsan tsan coverage mutants fuzz damage faults kills load package check-package browser browser-tools models databases wheel check-wheel
.PHONY: spark spark-tools spark-long compare-spark
.PHONY: python-library test-python-long docs compare-sklearn tidy format clean

demo: program
	@scripts/demo

test: build
	ctest --preset release

# The program alone, without the tests and what only they need.
program:
	@scripts/setup
	cmake --preset release >/dev/null
	cmake --build --preset release --target predselect_cli

build:
	@scripts/setup --tests
	cmake --preset release >/dev/null
	cmake --build --preset release

bench: build
	@scripts/bench

bench-growth: build
	for growth in build/release/bin/*_growth; do $$growth; done

bench-plot: build
	bench/plot_curves.py build/release/bin/engine_curves docs/performance.svg

bench-end: program
	.venv/bin/python3 bench/end_to_end.py $(OLD) build/release/bin/predselect

bench-scale: build
	bench/scale.py build/release/bin/predselect
	build/release/bin/merge_growth
	for piece in 100e3 2e6 100e6; do bench/merge_trees.py --piece $$piece; done

bench-peers: build
	python3 -m venv .venv-peers
	.venv-peers/bin/python3 -m pip install --quiet -r scripts/requirements-peers.txt
	.venv-peers/bin/python3 bench/peers.py build/release
	.venv-peers/bin/python3 bench/sniffers.py

compare: program
	tests/apps/compare_programs.py $(OLD) build/release/bin/predselect

check-exact: program
	python3 -m venv .venv-exact
	.venv-exact/bin/python3 -m pip install --quiet -r scripts/requirements-exact.txt
	.venv-exact/bin/python3 tests/apps/check_exact.py build/release/bin/predselect

asan:
	@scripts/setup --tests
	cmake --preset asan >/dev/null
	cmake --build --preset asan
	ctest --preset asan

ubsan:
	@scripts/setup --tests
	@scripts/setup --fuzz
	cmake --preset ubsan >/dev/null
	cmake --build --preset ubsan
	ctest --preset ubsan

tsan:
	@scripts/setup --tests
	cmake --preset tsan >/dev/null
	cmake --build --preset tsan
	ctest --preset tsan

package: program
	@scripts/setup --package
	cmake --build --preset release
	cd build/release && cpack -G DEB && cpack -G TGZ

check-package: package
	@scripts/check-package

browser-tools:
	@scripts/setup --browser
	python3 -m venv .venv-browser
	.venv-browser/bin/python3 -m pip install --quiet -r scripts/requirements-browser.txt

browser: program browser-tools
	@for law in $$(.venv-browser/bin/python3 tests/browser/check_reports.py --laws); do \
	  echo "$$law"; \
	  .venv-browser/bin/python3 tests/browser/check_reports.py build/release/bin/predselect $$law || exit 1; \
	done; echo "browser: every law holds"

# The second evaluator's own library and what that needs are not used, only the classes that it brings.
models:
	@scripts/setup --models
	python3 -m venv .venv-models
	.venv-models/bin/python3 -m pip install --quiet -r scripts/requirements-models.txt
	.venv-models/bin/python3 -m pip install --quiet --no-deps jpmml_evaluator==0.16.0

spark-tools:
	@scripts/setup --spark

spark: python-library spark-tools
	tests/engines/run build/release/lib

spark-long: python-library spark-tools
	tests/engines/run build/release/lib -m long

compare-spark: python-library spark-tools
	PREDSELECT_LIBRARY_DIR=$(CURDIR)/build/release/lib PYTHONPATH=$(CURDIR)/python/src \
	  .venv-spark/bin/python3 python/compare/compare_spark.py

databases:
	@scripts/setup
	python3 -m venv .venv-databases
	.venv-databases/bin/python3 -m pip install --quiet -r scripts/requirements-databases.txt

fuzz: export FUZZ_SECONDS ?= 600
fuzz:
	@scripts/setup --fuzz
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz
	@scripts/make-corpus
	@scripts/fuzz

coverage:
	@scripts/setup --tests
	@scripts/setup --coverage
	cmake --preset coverage >/dev/null
	cmake --build --preset coverage
	@scripts/coverage build/coverage

# MUTANTS of them are planted, drawn by SEED.
mutants: export MUTANTS ?= 500
mutants: export SEED ?= 1
mutants: build
	@scripts/setup --fuzz
	python3 -m venv .venv-mutants
	.venv-mutants/bin/python3 -m pip install --quiet -r scripts/requirements-mutants.txt
	.venv-mutants/bin/python3 tests/mutants/mutants.py build/release --count $(MUTANTS) --seed $(SEED)

damage: build
	@scripts/damage

faults: build
	tests/faults/inject.py build/release/bin/predselect build/release/lib/libfaults.so

kills: export KILLS ?= 1000
kills: program
	tests/faults/kill.py build/release/bin/predselect --kills $(KILLS)

load: export LOAD_SHARE ?= 1
load: build
	nice -n 10 .venv-python/bin/python3 tests/load/load.py build/release/bin/predselect build/release/lib \
	  --share $(LOAD_SHARE)

wheel:
	@scripts/setup --wheel
	@scripts/make-wheel

check-wheel: wheel program
	@scripts/check-wheel

# The libraries alone: what the package loads.
python-library: program
	cmake --build --preset release --target predselectcfiles

test-python-long: python-library
	@scripts/setup --tests
	cd python && PREDSELECT_LIBRARY_DIR=../build/release/lib PYTHONPATH=src \
	  ../.venv-python/bin/python3 -m pytest -m long

docs: python-library
	@scripts/setup --docs
	PREDSELECT_LIBRARY_DIR=$(CURDIR)/build/release/lib PYTHONPATH=$(CURDIR)/python/src \
	  .venv-docs/bin/sphinx-build -W -q -b html python/docs build/docs

compare-sklearn: python-library
	python3 -m venv .venv-compare
	.venv-compare/bin/python3 -m pip install --quiet -r scripts/requirements-compare.txt
	PREDSELECT_LIBRARY_DIR=build/release/lib PYTHONPATH=python/src \
	  .venv-compare/bin/python3 python/compare/compare.py

tidy: program
	@scripts/setup --dev
	@scripts/tidy

format:
	@scripts/setup --dev
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build
