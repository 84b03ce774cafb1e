#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The main job: a tour of the simulated gateway. Each scripts/tour.d/*.sh
# shows one family at work through qvsctl, inside one throwaway sandbox that
# starts from the default data model.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/host}
exec tests/sandbox/qvs-sandbox env PATH="$PWD/$build/bin:$PATH" LD_LIBRARY_PATH="$PWD/$build/lib" \
  bash -c 'set -e; for f in scripts/tour.d/*.sh; do echo "=== ${f##*/}"; bash "$f"; echo; done'
