#!/usr/bin/env bash
# Builds every fuzz target in fuzz/*.cpp with clang's libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs each for the given number of seconds.
#   tools/run_fuzz.sh [seconds per target, default 60] [target names...]
# A target fuzz/<name>_fuzz.cpp names the library folders it needs on a line
# "// fuzz-sources: src/frame src/<subsystem>" and may add libFuzzer flags on a line
# "// fuzz-options: -max_len=4096"; a line "// fuzz-exclude: src/frame/catalogue.cpp" leaves out sources
# the target compiles itself. It starts from the seed files in fuzz/seeds/<name>/ and, for the
# MPS reader, from the problem files in ../shared/data/mps when they are there (the catalogue reader
# also from the build's qnumerr.bin in both byte orders). Crashes, leaks
# and timeouts are written to build-fuzz/artifacts/; the corpus grows in build-fuzz/corpus/.
set -euo pipefail
cd "$(dirname "$0")/.."

. tools/install_needs.sh
install_needs command:cmake command:g++ command:make file:/usr/bin/clang++=clang \
  file:/usr/lib/llvm-14/lib/clang/14.0.6/lib/linux/libclang_rt.fuzzer-x86_64.a=libclang-rt-14-dev

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

jobs=$(nproc 2>/dev/null || echo 2)
# One library source, compiled for the fuzzer; the instruction-set paths for their instruction
# sets, as in the library.
compile() {
  local isa=()
  case $1 in
    *_avx512.cpp) isa=(-mavx512f -mavx512dq -mavx512vl -mavx512bw -mavx2 -mfma) ;;
    *_avx2.cpp) isa=(-mavx2 -mfma) ;;
  esac
  clang++ "${flags[@]}" "${isa[@]}" -fsanitize=fuzzer-no-link -c "$1" -o "$2"
}

# An object older than any header is compiled again.
newest_header=$(find src include "$build/generated" \( -name '*.hpp' -o -name '*.h' \) -exec ls -t {} + | head -n 1)

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
  exclude=" $(sed -n 's|^// fuzz-exclude: *||p' "fuzz/${name}_fuzz.cpp") "
  objs=()
  running=0
  for src in $(for d in ${dirs:-src/frame}; do ls "$d"/*.cpp; done); do
    [[ $exclude == *" $src "* ]] && continue
    obj="$build/obj/${src%.cpp}.o"
    objs+=("$obj")
    [ -f "$obj" ] && [ ! "$src" -nt "$obj" ] && [ ! "$newest_header" -nt "$obj" ] && continue
    mkdir -p "$(dirname "$obj")"
    compile "$src" "$obj" &
    running=$((running + 1))
    if [ $running -ge "$jobs" ]; then wait -n; running=$((running - 1)); fi
  done
  while [ $running -gt 0 ]; do wait -n; running=$((running - 1)); done
  clang++ "${flags[@]}" -fsanitize=fuzzer "fuzz/${name}_fuzz.cpp" "${objs[@]}" -lgomp -lpthread -lm -o "$bin"
  corpus="$build/corpus/$name"
  mkdir -p "$corpus"
  seeds=()
  [ -d "fuzz/seeds/$name" ] && seeds+=("fuzz/seeds/$name")
  if [ "$name" = catalogue ]; then
    # The build's own catalogue in both byte orders.
    mkdir -p "$build/seeds/catalogue"
    cp "$build/qnumerr.bin" "$build/seeds/catalogue/qnumerr.bin"
    "$build/qnum_mkcatalog" --swap --out "$build/seeds/catalogue/qnumerr_swapped.bin" data/messages/*.msg
    seeds+=("$build/seeds/catalogue")
  fi
  if [ "$name" = mps ] && [ -d ../shared/data/mps ]; then
    mkdir -p "$build/seeds/mps"
    cp ../shared/data/mps/*.mps ../shared/data/mps/*.qps "$build/seeds/mps/" 2>/dev/null || true
    seeds+=("$build/seeds/mps")
  fi
  echo "== $name: ${seconds}s"
  # An allocation above 512 MB fails as it would on a machine without the memory, so that the
  # routines' out-of-memory paths run instead of the sanitizer stopping the search.
  ASAN_OPTIONS="allocator_may_return_null=1:max_allocation_size_mb=512${ASAN_OPTIONS:+:$ASAN_OPTIONS}" \
  QNUMERRPATH="$PWD/$build" "$bin" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 "${options[@]}" -artifact_prefix="$build/artifacts/${name}-" "$corpus" "${seeds[@]}" \
    2>&1 | tee "$build/${name}.log" | grep -E "^(#[0-9]+ +DONE|stat::number_of_executed_units|==[0-9]+==ERROR|SUMMARY)" || true
  if grep -qE "ERROR: (AddressSanitizer|LeakSanitizer|UndefinedBehaviorSanitizer|libFuzzer)|runtime error" "$build/${name}.log"; then
    echo "$name: FAILED, see $build/${name}.log"
    status=1
  fi
done
exit $status
