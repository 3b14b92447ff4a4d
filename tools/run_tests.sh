#!/usr/bin/env bash
# Builds the library and runs the whole test suite three ways: a release build, a build
# under AddressSanitizer + UndefinedBehaviorSanitizer, and the threaded tests under
# ThreadSanitizer. Installs the build tools first when they are missing (Debian).
set -euo pipefail
cd "$(dirname "$0")/.."

. tools/install_needs.sh
install_needs command:cmake command:g++ command:make \
  file:/usr/include/gtest/gtest.h=libgtest-dev file:/usr/include/gmock/gmock.h=libgmock-dev

jobs=$(nproc 2>/dev/null || echo 2)
run() {  # run <build dir> <ctest args...> -- <cmake args...>
  local dir=$1; shift
  local ctest_args=()
  while [ $# -gt 0 ] && [ "$1" != "--" ]; do ctest_args+=("$1"); shift; done
  shift || true
  cmake -S . -B "$dir" -DQNUM_BUILD_EXAMPLES=OFF "$@" >/dev/null
  cmake --build "$dir" -j"$jobs"
  (cd "$dir" && ctest --output-on-failure -j"$jobs" "${ctest_args[@]}")
}

echo "== release build =="
run build-test -- -DCMAKE_BUILD_TYPE=Release
echo "== AddressSanitizer + UndefinedBehaviorSanitizer =="
ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1 \
  run build-asan -- -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQNUM_SANITIZE=address,undefined
echo "== ThreadSanitizer (threaded tests) =="
TSAN_OPTIONS=halt_on_error=1 run build-tsan -R 'Thread' -- -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQNUM_SANITIZE=thread
