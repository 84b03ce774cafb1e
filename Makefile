# Front door. `make test` and `make run` do all set-up on a fresh machine.
SHELL := /bin/bash
PRESETS := host host-asan host-clang host-release armhf

.PHONY: all deps build test run bench clean size fuzz coverage valgrind $(addprefix build-,$(PRESETS)) $(addprefix test-,$(PRESETS))

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

build: build-host

# Every suite: the host build (GCC), the host build under ASan/UBSan, the
# host build with Clang, and the armhf build under qemu-user; then the checks
# on the shipped object itself.
test: deps
	$(MAKE) build-host build-host-asan build-host-clang build-armhf
	ctest --preset host
	ctest --preset host-asan
	ctest --preset host-clang
	ctest --preset armhf
	bash scripts/check-shipped.sh

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
# fails the run. Only the simulator's own SQLite blocks are suppressed.
VALGRIND = valgrind --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite,possible --show-leak-kinds=definite,possible --suppressions=$(CURDIR)/tests/valgrind/qvsim-sqlite.supp --quiet
valgrind: build-host
	QVS_SANDBOX_WRAPPER="$(VALGRIND)" ctest --preset host --timeout 1200 $(VALGRIND_CTEST_ARGS)

clean:
	rm -rf build
