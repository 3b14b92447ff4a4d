#!/usr/bin/env bash
# Builds every fuzz target in fuzz/*.cpp with clang's libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs each for the given number of seconds.
#   tools/run_fuzz.sh [seconds per target, default 60] [target names...]
# A target fuzz/<name>_fuzz.cpp names the library folders it needs on a line
# "// fuzz-sources: src/frame src/<subsystem>" and may add libFuzzer flags on a line
# "// fuzz-options: -max_len=4096". It starts from the seed files in fuzz/seeds/<name>/ and, for the
# MPS reader, from the problem files in ../shared/data/mps when they are there. Crashes, leaks
# and timeouts are written to build-fuzz/artifacts/; the corpus grows in build-fuzz/corpus/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
build=build-fuzz
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$PWD}

# The message catalogue and its generated constants come from a plain configure; the sources a
# target needs (listed on its "// fuzz-sources:" line, default src/frame) are compiled by clang
# with the sanitizers and with coverage for the fuzzer.
cmake -S . -B "$build" -DQNUM_BUILD_TESTS=OFF -DQNUM_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" --target qnum_catalogue >/dev/null
flags=(-std=c++17 -g -O1 -fsanitize=address,undefined -fno-sanitize-recover=undefined
       -fno-omit-frame-pointer -Iinclude -Isrc -I"$build/generated")

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for src in fuzz/*_fuzz.cpp; do targets+=("$(basename "$src" _fuzz.cpp)"); done
fi
mkdir -p "$build/bin" "$build/artifacts"
status=0
for name in "${targets[@]}"; do
  bin="$build/bin/${name}_fuzz"
  dirs=$(sed -n 's|^// fuzz-sources: *||p' "fuzz/${name}_fuzz.cpp")
  read -r -a options <<<"$(sed -n 's|^// fuzz-options: *||p' "fuzz/${name}_fuzz.cpp")"
  objs=()
  for src in $(for d in ${dirs:-src/frame}; do ls "$d"/*.cpp; done); do
    obj="$build/obj/${src%.cpp}.o"
    mkdir -p "$(dirname "$obj")"
    if [ ! -f "$obj" ] || [ "$src" -nt "$obj" ]; then
      clang++ "${flags[@]}" -fsanitize=fuzzer-no-link -c "$src" -o "$obj"
    fi
    objs+=("$obj")
  done
  clang++ "${flags[@]}" -fsanitize=fuzzer "fuzz/${name}_fuzz.cpp" "${objs[@]}" -lgomp -lpthread -lm -o "$bin"
  corpus="$build/corpus/$name"
  mkdir -p "$corpus"
  seeds=()
  [ -d "fuzz/seeds/$name" ] && seeds+=("fuzz/seeds/$name")
  if [ "$name" = mps ] && [ -d ../shared/data/mps ]; then
    mkdir -p "$build/seeds/mps"
    cp ../shared/data/mps/*.mps ../shared/data/mps/*.qps "$build/seeds/mps/" 2>/dev/null || true
    seeds+=("$build/seeds/mps")
  fi
  echo "== $name: ${seconds}s"
  QNUMERRPATH="$PWD/$build" "$bin" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 "${options[@]}" -artifact_prefix="$build/artifacts/${name}-" "$corpus" "${seeds[@]}" \
    2>&1 | tee "$build/${name}.log" | grep -E "^(#[0-9]+ +DONE|stat::number_of_executed_units|==[0-9]+==ERROR|SUMMARY)" || true
  if grep -qE "ERROR: (AddressSanitizer|LeakSanitizer|UndefinedBehaviorSanitizer|libFuzzer)|runtime error" "$build/${name}.log"; then
    echo "$name: FAILED, see $build/${name}.log"
    status=1
  fi
done
exit $status
