#!/usr/bin/env bash
# Builds ZOLamsadm, installs it into a demo product root (./demo) with a seeded settings store,
# and starts it there. Only the product is built (programs, libraries, data), in its own build
# folder: the tests, fuzz targets and benchmarks are the test command's business.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
cmake -S . -B build-demo -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZOL_BUILD_TESTS=OFF -DZOL_BUILD_BENCH=OFF -DZOL_BUILD_FUZZ=OFF >/dev/null
cmake --build build-demo -j "$(nproc)"
cmake --install build-demo --prefix "$PWD/demo" >/dev/null
export ZolDir="$PWD/demo"
if [ ! -f demo/registry/hklm.db ]; then
    demo/bin/zolreg init
fi
exec demo/bin/ZOLamsadm "$@"
