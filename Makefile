# The front door: each target sets up what it needs by itself on Debian 12.
#
#   make demo           draw real models into demo-out/ and an index.html that shows them
#   make test           build and test, plain and under the sanitizers
#   make bench          time the library; make bench-rivals compares it with OSMesa
#   make fuzz           fuzz each target for FUZZ_SECONDS
#   make install        install into PREFIX (/usr/local), under DESTDIR if given
#   make docs           one site of all pages and docstrings in DOCS_OUT (build/site)

JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
DESTDIR ?=
DEMO_OUT ?= demo-out
FUZZ_SECONDS ?= 60

.DEFAULT_GOAL := demo
.PHONY: demo test bench bench-rivals fuzz install clean

demo:
	scripts/install-packages.sh build demo
	cmake --preset release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
	cmake --build --preset release -j $(JOBS)
	scripts/run-demo.sh build/release/bin $(DEMO_OUT)

test:
	scripts/install-packages.sh build test demo
	cmake --preset release -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON
	cmake --build --preset release -j $(JOBS)
	ctest --preset release -j $(JOBS)
	cmake --preset asan -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)

bench:
	scripts/install-packages.sh build bench
	cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=OFF -DZX_BUILD_BENCH=ON
	cmake --build build/bench -j $(JOBS)
	scripts/run-bench.sh build/bench/bin

bench-rivals:
	scripts/install-packages.sh build bench rivals
	cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=OFF -DZX_BUILD_BENCH=ON -DZX_BUILD_RIVALS=ON
	cmake --build build/bench -j $(JOBS)
	build/bench/bin/bench_rivals

fuzz:
	scripts/install-packages.sh build fuzz
	CXX=clang++-14 cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=OFF -DZX_BUILD_FUZZ=ON
	cmake --build build/fuzz -j $(JOBS)
	scripts/run-fuzz.sh build/fuzz/bin $(FUZZ_SECONDS)

install:
	scripts/install-packages.sh build
	cmake -S . -B build/install -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=$(PREFIX) -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
	cmake --build build/install -j $(JOBS)
	DESTDIR=$(DESTDIR) cmake --install build/install

clean:
	rm -rf build demo-out

DOCS_OUT ?= build/site
.PHONY: docs
docs:
	scripts/install-packages.sh build docs
	cmake --preset release -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
	cmake --build --preset release -j $(JOBS)
	docs/site/build.sh build/release $(DOCS_OUT)
