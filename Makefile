# The two commands of a newcomer: `make demo` and `make test`. Each installs what is
# missing on a Debian machine, configures, builds and runs.
BUILD      ?= build
ASAN_BUILD ?= build-asan
TSAN_BUILD ?= build-tsan
QT6_BUILD  ?= build-qt6
BENCH_BUILD ?= build-bench
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
FUZZERS    := fuzz_registry fuzz_translators fuzz_blocks fuzz_decode
JOBS       ?= $(shell nproc)
# The Debian packages' test needs dpkg-dev (dpkg-shlibdeps), file (CPack) and lintian; the ABI
# check needs abigail-tools.
PACKAGES   := cmake g++ make pkg-config qtbase5-dev qt6-base-dev abigail-tools dpkg-dev file \
              lintian
SUDO       := $(shell [ "$$(id -u)" = 0 ] || echo sudo)
CTEST      := ctest --output-on-failure -j $(JOBS)

.PHONY: all deps browser build build-asan build-tsan build-qt6 demo reference test test-plain \
        test-asan test-tsan test-qt6 package abi-baseline bench fuzz clean

all: build

deps:
	@missing=$$(for p in $(PACKAGES); do \
	    dpkg-query -W -f='$${Status}\n' $$p 2>/dev/null | grep -q 'install ok installed' || echo $$p; \
	  done); \
	if [ -n "$$missing" ]; then \
	  echo "installing:" $$missing; \
	  $(SUDO) apt-get update -q && \
	  DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -q --no-install-recommends $$missing; \
	fi

# The reference page's test renders it in a real browser; where none can be installed, that
# test reports itself skipped.
browser:
	@$(MAKE) --no-print-directory deps PACKAGES=chromium || \
	  echo "chromium could not be installed: the reference page's browser checks will be skipped"

build: deps
	cmake -S . -B $(BUILD) -DDAL_QT=5 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDAL_WERROR=ON
	cmake --build $(BUILD) -j $(JOBS)

build-asan: deps
	cmake -S . -B $(ASAN_BUILD) -DDAL_QT=5 -DCMAKE_BUILD_TYPE=Debug -DDAL_SANITIZE=ON -DDAL_WERROR=ON
	cmake --build $(ASAN_BUILD) -j $(JOBS)

build-tsan: deps
	cmake -S . -B $(TSAN_BUILD) -DDAL_QT=5 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDAL_TSAN=ON -DDAL_WERROR=ON
	cmake --build $(TSAN_BUILD) -j $(JOBS)

# Qt 6 beside Qt 5; its suite also compares every request's output with the Qt 5 build's.
build-qt6: build
	cmake -S . -B $(QT6_BUILD) -DDAL_QT=6 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDAL_WERROR=ON \
	  -DDAL_COMPARE_DALCTL=$(CURDIR)/$(BUILD)/dalctl
	cmake --build $(QT6_BUILD) -j $(JOBS)

demo: build
	$(BUILD)/dalctl demo

reference: build
	$(BUILD)/dalctl doc --out $(BUILD)/reference.html
	@echo "wrote $(BUILD)/reference.html"

test-plain: build browser
	cd $(BUILD) && $(CTEST)

test-asan: build-asan browser
	cd $(ASAN_BUILD) && \
	  ASAN_OPTIONS=halt_on_error=1:detect_leaks=1 \
	  UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 $(CTEST)

test-tsan: build-tsan browser
	cd $(TSAN_BUILD) && \
	  TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=$(CURDIR)/tests/tsan.supp \
	  $(CTEST)

test-qt6: build-qt6 browser
	cd $(QT6_BUILD) && $(CTEST)

test: test-plain test-asan test-tsan test-qt6

# The Debian packages of the Qt 5 build, written into it: the runtime, the development files
# and dalctl.
package: build
	cd $(BUILD) && cpack -G DEB
	@ls $(BUILD)/*.deb

# Rewrites both ABI baselines from the Qt 5 and Qt 6 builds, after a deliberate change (README).
abi-baseline: build-qt6
	cmake --build $(BUILD) --target abi_baseline
	cmake --build $(QT6_BUILD) --target abi_baseline

bench: deps browser
	$(MAKE) deps PACKAGES=libbenchmark-dev
	cmake -S . -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DDAL_BENCH=ON -DDAL_WERROR=ON
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target dalctl dal_bench explain_bench
	$(BENCH_BUILD)/bench/dal_bench
	$(BENCH_BUILD)/bench/explain_bench
	bench/first_answer.sh $(BENCH_BUILD)/dalctl
	bench/explain_rate.sh $(BENCH_BUILD)/dalctl
	bench/reference_keystroke.sh $(BENCH_BUILD)/dalctl 10

fuzz: deps
	$(MAKE) deps PACKAGES="clang libclang-rt-14-dev"
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDAL_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target $(FUZZERS)
	fuzz/run.sh $(FUZZ_BUILD)/fuzz $(FUZZ_SECONDS) $(FUZZERS)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(TSAN_BUILD) $(QT6_BUILD) $(BENCH_BUILD) $(FUZZ_BUILD)
