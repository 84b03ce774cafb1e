# Front door. `make test` and `make run` do all set-up on a fresh machine.
SHELL := /bin/bash
PRESETS := host host-asan armhf

.PHONY: all deps build test run clean $(addprefix build-,$(PRESETS) host-release) $(addprefix test-,$(PRESETS)) bench

all: build

deps:
	@bash scripts/install-deps.sh
	@bash scripts/fetch-sources.sh

build-%: deps
	cmake --preset $* >/dev/null
	cmake --build --preset $*

build: build-host

test-%: build-%
	ctest --preset $*

# Every suite: the host build, the host build under ASan/UBSan, and the
# armhf build under qemu-user; then the checks on the shipped object itself.
test: deps
	$(MAKE) build-host build-host-asan build-armhf
	ctest --preset host
	ctest --preset host-asan
	ctest --preset armhf
	bash scripts/check-shipped.sh

# The main job: a tour of the simulated gateway through qvsctl.
run: build-host
	bash scripts/tour.sh build/host

bench: build-host-release
	bash scripts/bench.sh build/host-release

clean:
	rm -rf build
