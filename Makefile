# SPDX-License-Identifier: MIT
# Front door. `make test` and `make run` do all set-up on a fresh machine.
SHELL := /bin/bash
PRESETS := host host-asan host-clang host-release armhf

# The shipped objects (release, with debug information for the ABI check,
# installed under /usr): packages, ABI baseline, consumer example.
PKG_PRESETS := pkg-amd64 pkg-armhf

.PHONY: all deps build test run bench clean size package docs abi-baseline abi-check consumer fuzz coverage valgrind feed reproducible \
	test-target test-target-all \
	$(addprefix build-,$(PRESETS) $(PKG_PRESETS)) $(addprefix test-,$(PRESETS))

all: build

deps:
	@bash scripts/install-deps.sh
	@bash scripts/fetch-sources.sh

# One explicit configure-and-build rule per preset (phony targets take no
# pattern rules).
define preset_rules
build-$(1): deps
	cmake --preset $(1) >/dev/null
	cmake --build --preset $(1)

test-$(1): build-$(1)
	ctest --preset $(1)
endef
$(foreach p,$(PRESETS),$(eval $(call preset_rules,$(p))))

define pkg_preset_rules
build-$(1): deps
	cmake --preset $(1) >/dev/null
	cmake --build --preset $(1)
endef
$(foreach p,$(PKG_PRESETS),$(eval $(call pkg_preset_rules,$(p))))

build: build-host

# Every suite: the host build (GCC), the host build under ASan/UBSan, the
# host build with Clang in the gateway's busybox userland, and the armhf
# build under qemu-user; the injection and fault tables once more from copies
# of the tree under /tmp and /var/tmp (the checks don't depend on where the
# checkout lives); then the checks
# on the shipped object itself: exported symbols, the Debian packages
# (lintian), the ABI against abi/, the consumer example against the staging
# trees and the unpacked amd64 packages, the API reference and the manual
# pages of the -dev package. Also: the hardening of every shipped object, the
# packages' SBOMs, the amd64 packages installed with apt from the signed feed
# into a clean Debian root, and the licence line in every source file. The
# release build (the benchmarks') is built too, so it can't stop compiling
# unseen, and the armhf object's size and worst-case stack stay checked.
test: deps
	$(MAKE) build-host build-host-asan build-host-clang build-armhf build-host-release
	ctest --preset host
	ctest --preset host-asan
	ctest --preset host-clang
	ctest --preset armhf
	bash scripts/location-check.sh build/host
	bash scripts/package.sh
	bash scripts/check-shipped.sh
	bash scripts/size-report.sh build/armhf
	bash scripts/sbom-check.sh
	bash scripts/abi.sh check
	bash scripts/consumer-test.sh
	bash scripts/feed.sh
	bash scripts/feed-test.sh
	bash scripts/test-target.sh subset
	bash scripts/spdx-check.sh
	bash scripts/docs.sh
	bash scripts/man-check.sh

# Debian packages for amd64 and armhf into build/packages/, checked by lintian.
package: deps
	bash scripts/package.sh

# The four packages as a signed apt repository in build/feed/ (test key in
# build/feed-key/).
feed: package
	bash scripts/feed.sh

# Two builds of the last commit from two clones under different conditions:
# the libraries and packages must be bit-identical (diffoscope otherwise).
reproducible: deps
	bash scripts/reproducible.sh

# HTML API reference into build/docs/html; fails on any Doxygen warning.
docs: deps
	bash scripts/docs.sh

# The ABI check alone, and the deliberate rewrite of its baseline (commit abi/).
abi-check: build-pkg-amd64 build-pkg-armhf
	bash scripts/abi.sh check

abi-baseline: build-pkg-amd64 build-pkg-armhf
	bash scripts/abi.sh baseline

# The consumer example against staging trees and the unpacked amd64 packages.
consumer: package
	bash scripts/consumer-test.sh

# The armhf suites on a booted ARM system (qemu-system-arm; the image is
# built once under build/target): the kernel-facing subset, or every suite.
test-target: build-armhf build-pkg-armhf
	bash scripts/test-target.sh subset

test-target-all: build-armhf build-pkg-armhf
	bash scripts/test-target.sh all

# The main job: a tour of the simulated gateway through qvsctl.
run: build-host
	bash scripts/tour.sh build/host

bench: build-host-release
	bash scripts/bench.sh build/host-release

size: build-armhf
	bash scripts/size-report.sh build/armhf

# libFuzzer harnesses (Clang, ASan and UBSan), each run FUZZ_SECONDS inside
# the sandbox on a copy of its seed corpus; a crash fails the target and
# libFuzzer prints the input. `make test` replays the seed corpora.
FUZZ_SECONDS ?= 60
fuzz: deps
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz
	bash scripts/fuzz.sh build/fuzz $(FUZZ_SECONDS)

# Line and branch coverage of src/ over the host suites (GCC --coverage,
# gcovr). The tree is read-only inside the sandbox: the counters go to
# build/coverage-data (kept writable there) and are copied back for gcovr.
coverage: deps
	cmake --preset coverage >/dev/null
	cmake --build --preset coverage
	bash scripts/coverage.sh build/coverage

# The host suites under valgrind's memcheck (inside each sandbox); any error
# fails the run. Suppressed: the simulator's own SQLite blocks, and the
# "fishy" size of the two tests' deliberate huge allocations. Stacks of 40
# frames, so that a suppression sees who called; a test program's own
# calloc (it fails one allocation on demand) is left in place. Every test's
# time limit is multiplied for the run (memcheck is many times slower), and
# put back afterwards; the Base64 differential tests run 5,000 random rounds
# per codec instead of 100,000. Two tests can't run under memcheck: one makes
# popen fail by an exec that fails, which memcheck (like qemu-user, where
# that test isn't built) doesn't report back from posix_spawn; one limits
# the process's data size, which memcheck's own allocator doesn't obey.
VALGRIND = valgrind --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite,possible --show-leak-kinds=definite,possible \
	--num-callers=40 --soname-synonyms=somalloc=nouserintercepts \
	--suppressions=$(CURDIR)/tests/valgrind/qvsim-sqlite.supp --suppressions=$(CURDIR)/tests/valgrind/huge-allocations.supp --quiet
VALGRIND_TIMEOUT_SCALE = 20
VALGRIND_EXCLUDE = ^(VpnDnsmasqHost[.]FailingPopenIsReportedOnStandardOutputAndNoSignalIsSent|VpnStatisticsHost[.]NoMemoryForTheTableGivesMinusOne)$$
valgrind: build-host
	cmake --preset host -DQVS_TEST_TIMEOUT_SCALE=$(VALGRIND_TIMEOUT_SCALE) >/dev/null
	status=0; QVS_DIFFERENTIAL_ROUNDS=5000 QVS_SANDBOX_WRAPPER="$(VALGRIND)" ctest --preset host -E '$(VALGRIND_EXCLUDE)' $(VALGRIND_CTEST_ARGS) || status=$$?; \
	cmake --preset host >/dev/null; exit $$status

clean:
	rm -rf build
