# The front door: each target sets up what it needs by itself on Debian 12 and 13. What a target is about to
# do, and which packages it would install first, it prints before anything else.
#
#   make, make demo     draw real models into demo-out/ and an index.html that shows them
#   make test           build and test, plain and under the sanitizers
#   make check          check the source text: format, words, headers, linters, both compilers' warnings
#   make abi            hold the binary interface against that of the last release
#   make test-arm64     the same for arm64 under qemu, and that both compute the same bits
#   make bench          time the library; make bench-rivals compares it with OSMesa, by RIVALS_OPTIONS
#   make fuzz           fuzz each target for FUZZ_SECONDS
#   make install        install into PREFIX (/usr/local), under DESTDIR if given
#   make docs           one site of all pages and docstrings in DOCS_OUT (build/site)
#   make python         build the Python module, install it into a virtual environment, test it
#   make package        make Debian packages; make test-package tries them in bare roots
#   make farm           draw on a Dask scheduler and workers, one of which is killed on the way
#   make coverage       which lines and branches the tests run, as pages in build/coverage/html
#   make valgrind       run the demo's programs and the object model's tests under valgrind
#   make mutants        change lines by chance and see whether the tests notice; MUTANTS says how many
#   make test-compilers build with every clang that this Debian has, and with Qt 6
#   make reproducible   build twice in two folders and compare every installed file
#   make test-long      100,000 rounds each of what a host repeats, under watch of the memory
#   make test-all       everything: check, test, test-long, reproducible, test-arm64, docs, python, farm, test-package; hours

JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
DESTDIR ?=
DEMO_OUT ?= demo-out
FUZZ_SECONDS ?= 60
RIVALS_OPTIONS ?=
WARNINGS_AS_ERRORS ?= OFF

.DEFAULT_GOAL := demo
.PHONY: demo test check abi test-arm64 bench bench-rivals fuzz install clean help

demo:
	@scripts/announce.sh "build demo" "build the library and zxrender in build/release" \
	  "draw models and examples into $(DEMO_OUT)/; $(DEMO_OUT)/index.html will show the pictures"
	scripts/install-packages.sh build demo
	cmake --preset release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
	cmake --build --preset release -j $(JOBS)
	scripts/run-demo.sh build/release/bin $(DEMO_OUT)

test:
	@scripts/announce.sh "build test demo" "build and test in build/release" \
	  "build and test once more under the sanitizers, in build/asan"
	scripts/install-packages.sh build test demo
	cmake --preset release -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON -DZX_WARNINGS_AS_ERRORS=$(WARNINGS_AS_ERRORS)
	cmake --build --preset release -j $(JOBS)
	ctest --preset release -j $(JOBS)
	cmake --preset asan -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)

check:
	@scripts/announce.sh "build check" "check the source text, with clang-format, clang-tidy and clang of version 14 where the system has them"
	scripts/install-packages.sh build check
	cmake -S . -B build/check -G Ninja -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
	JOBS=$(JOBS) scripts/check.sh

abi:
	@scripts/announce.sh "build abi" "build with debug information in build/abi" \
	  "compare the libraries' binary interface with the newest release in abi/, by libabigail"
	scripts/install-packages.sh build abi
	JOBS=$(JOBS) scripts/check-abi.sh

test-arm64:
	@scripts/announce.sh "build test demo arm64" "build for this machine in build/release and for arm64 in build/arm64" \
	  "run the arm64 build under qemu and compare what it computes with this machine's"
	JOBS=$(JOBS) scripts/test-arm64.sh

bench:
	@scripts/announce.sh "build bench" "build the benchmarks in build/bench and run them"
	scripts/install-packages.sh build bench
	cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=OFF -DZX_BUILD_BENCH=ON
	cmake --build build/bench -j $(JOBS)
	scripts/run-bench.sh build/bench/bin

bench-rivals:
	@scripts/announce.sh "build bench rivals" "build the comparison with OSMesa in build/bench and run it, which takes five minutes"
	scripts/install-packages.sh build bench rivals
	cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=OFF -DZX_BUILD_BENCH=ON -DZX_BUILD_RIVALS=ON
	cmake --build build/bench -j $(JOBS) --target bench_rivals
	build/bench/bin/bench_rivals $(RIVALS_OPTIONS)

fuzz:
	@scripts/announce.sh "build fuzz" "build the fuzz targets with clang in build/fuzz" \
	  "run each of them for $(FUZZ_SECONDS) s"
	scripts/install-packages.sh build fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	scripts/run-fuzz.sh build/fuzz/bin $(FUZZ_SECONDS)

install:
	@scripts/announce.sh "build" "build the library and zxrender in build/install" \
	  "install them into $(DESTDIR)$(PREFIX)"
	scripts/install-packages.sh build
	cmake -S . -B build/install -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=$(PREFIX) -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
	cmake --build build/install -j $(JOBS)
	DESTDIR=$(DESTDIR) cmake --install build/install

help:
	@sed -n 's/^#   //p' Makefile

clean:
	rm -rf build demo-out

DOCS_OUT ?= build/site
.PHONY: docs
docs:
	scripts/install-packages.sh build docs
	cmake --preset release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
	cmake --build --preset release -j $(JOBS)
	docs/site/build.sh build/release $(DOCS_OUT)

# --- Python and packages

.PHONY: python package test-package farm

# Builds the Python module, installs it into a virtual environment and tests it there. Freed memory is
# overwritten, so that a view of it is found out.
python:
	scripts/install-packages.sh build python
	/usr/bin/python3 -m venv --clear --system-site-packages build/venv
	JOBS=$(JOBS) build/venv/bin/pip install --no-index ./python
	MALLOC_PERTURB_=165 build/venv/bin/python -m pytest -q -p no:cacheprovider python/tests

# Makes the Debian packages in build/package.
package:
	scripts/install-packages.sh build package
	JOBS=$(JOBS) scripts/make-package.sh build/package

# Builds and tries the packages in bare roots of Debian 12 and 13; needs root and the network.
test-package:
	scripts/test-package.sh

# Draws on a Dask scheduler and workers, one of which is killed on the way.
farm: python
	scripts/install-packages.sh farm demo
	cmake --preset release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
	cmake --build --preset release -j $(JOBS) --target zxrender
	ZX_RENDER=$(CURDIR)/build/release/bin/zxrender build/venv/bin/python -m pytest -q -p no:cacheprovider python/tests_farm

.PHONY: coverage mutants test-compilers
coverage:
	@scripts/announce.sh "build test demo coverage" "build for measuring in build/coverage, run the tests" \
	  "write build/coverage/html/index.html"
	scripts/install-packages.sh build test demo coverage
	JOBS=$(JOBS) scripts/coverage.sh

.PHONY: valgrind
valgrind:
	@scripts/announce.sh "build test demo valgrind" "build in build/release" \
	  "run the examples, two models and the object model's tests under valgrind's memcheck"
	scripts/install-packages.sh build test demo valgrind
	cmake --preset release -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON
	cmake --build --preset release -j $(JOBS)
	scripts/valgrind.sh build/release/bin

MUTANTS ?= 50
MUTANTS_SEED ?= 1
mutants:
	scripts/install-packages.sh build test
	scripts/mutate.py -j $(JOBS) --count $(MUTANTS) --seed $(MUTANTS_SEED) \
	  $$(git ls-files 'src/*.cpp' 'src/*-inl.h' 'siblings/*/src/*.cpp')

test-compilers:
	@scripts/announce.sh "build test clangs qt6" "build in build/compilers with each compiler and compare what they compute"
	JOBS=$(JOBS) scripts/test-compilers.sh

.PHONY: reproducible test-long
reproducible:
	@scripts/announce.sh "build" "build in two folders of build/reproducible and compare what is installed"
	scripts/install-packages.sh build
	JOBS=$(JOBS) scripts/check-reproducible.sh

ROUNDS ?= 100000
test-long:
	@scripts/announce.sh "build test" "build in build/release and run $(ROUNDS) rounds of each test of steady memory"
	scripts/install-packages.sh build test
	cmake --preset release -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON
	cmake --build --preset release -j $(JOBS) --target test_render test_object
	for program in test_render test_object; do \
	  ZX_ROUNDS=$(ROUNDS) build/release/bin/$$program --gtest_brief=1 --gtest_filter='SteadyMemory.*' || exit 1; done

# What `make test` leaves out because it takes long, or changes the system more than a test should.
.PHONY: test-all
test-all: check test test-long reproducible test-arm64 docs python farm test-package
