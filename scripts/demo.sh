#!/usr/bin/env bash
# Builds ZOLamsadm, installs it into a demo product root (./demo) with a seeded settings store,
# and starts it there.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)"
cmake --install build --prefix "$PWD/demo" >/dev/null
export ZolDir="$PWD/demo"
if [ ! -f demo/registry/hklm.db ]; then
    demo/bin/zolreg init
fi
exec demo/bin/ZOLamsadm "$@"
