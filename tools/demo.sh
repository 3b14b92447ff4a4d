#!/usr/bin/env bash
# Builds the library and its examples (installing CMake and a compiler first when they are
# missing, on Debian) and runs the demo, then every other example program.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/install_needs.sh
install_needs command:cmake command:g++ command:make
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DQNUM_BUILD_TESTS=OFF >/dev/null
cmake --build build -j"$(nproc 2>/dev/null || echo 2)"
cd build/examples
./qnum_demo
for program in ./qnum_*; do
  [ "$program" = ./qnum_demo ] || [ ! -x "$program" ] && continue
  echo; echo "== ${program#./} =="
  "$program"
done
