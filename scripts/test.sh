#!/usr/bin/env bash
# Builds ZOLamsadm and passes every test: formatting check, the normal build, then the
# AddressSanitizer + UndefinedBehaviorSanitizer build. Benchmarks are built but not run.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh

echo "== clang-format check"
git ls-files -z -- '*.cpp' '*.h' '*.c' | xargs -0 -r clang-format --dry-run --Werror

jobs=$(nproc)
for variant in "build:-DZOL_SANITIZE=OFF" "build-asan:-DZOL_SANITIZE=ON"; do
    dir=${variant%%:*}
    opt=${variant#*:}
    echo "== $dir"
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$opt" >/dev/null
    cmake --build "$dir" -j "$jobs"
    ctest --test-dir "$dir" --output-on-failure -j "$jobs" --timeout 600
done
