#!/usr/bin/env bash
# Builds ZOLamsadm and passes every test: formatting check, the normal build, then the
# AddressSanitizer + UndefinedBehaviorSanitizer build. Benchmarks are built but not run. A Release
# build (-O3, where GCC warns about things -O2 never sees) is built too, without running its
# tests again, so that every build type stays warning-free. The normal build's tests also build the
# Debian package (cpack, tests/package), check it with lintian and run it from a scratch root.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh

echo "== clang-format check"
git ls-files -z -- '*.cpp' '*.h' '*.c' | xargs -0 -r clang-format --dry-run --Werror

jobs=$(nproc)
# dir : build type : extra option : run the tests
# The Release build comes first, so that the test summary is the last thing printed.
for variant in "build-release:Release:-DZOL_SANITIZE=OFF:no" \
               "build:RelWithDebInfo:-DZOL_SANITIZE=OFF:yes" \
               "build-asan:RelWithDebInfo:-DZOL_SANITIZE=ON:yes"; do
    IFS=: read -r dir type opt run <<<"$variant"
    echo "== $dir ($type)"
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="$type" "$opt" >/dev/null
    cmake --build "$dir" -j "$jobs"
    if [ "$run" = yes ]; then
        ctest --test-dir "$dir" --output-on-failure -j "$jobs" --timeout 600
    fi
done
