#!/usr/bin/env bash
# Builds the libFuzzer harnesses of tests/fuzz (the fuzz preset: clang 14 with AddressSanitizer,
# LeakSanitizer and UndefinedBehaviorSanitizer) and runs each in turn for a while, on a copy of
# its seeds and of the inputs it once failed on, so the committed corpus never grows. Fails on
# any crash, leak, time-out, sanitizer report or failed check, and says where the input that
# caused it was kept: copy it to tests/fuzz/regressions/<name>/ once fixed.
#
#   scripts/fuzz.sh [--seconds N] [NAME...]    N: seconds per harness (default 30)
#                                              NAME: json, model, archive, form (default: all)
set -euo pipefail
cd "$(dirname "$0")/.."

harnesses=(json model archive form)
seconds=30
names=()
while [ $# -gt 0 ]; do
  case "$1" in
    --seconds) seconds="${2:-}"; shift 2 || { echo "fuzz.sh: --seconds needs a number" >&2; exit 2; } ;;
    --seconds=*) seconds="${1#*=}"; shift ;;
    -h | --help) sed -n '2,9p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    -*) echo "fuzz.sh: unknown option $1" >&2; exit 2 ;;
    *) names+=("$1"); shift ;;
  esac
done
if ! [[ "$seconds" =~ ^[1-9][0-9]*$ ]]; then
  echo "fuzz.sh: --seconds takes a whole number of seconds above 0, not \"$seconds\"" >&2
  exit 2
fi
if [ ${#names[@]} -eq 0 ]; then names=("${harnesses[@]}"); fi
for name in "${names[@]}"; do
  if [[ " ${harnesses[*]} " != *" $name "* ]]; then
    echo "fuzz.sh: no harness named \"$name\" (there are: ${harnesses[*]})" >&2
    exit 2
  fi
done

# Only the harnesses asked for, and only the parts of the library they reach, are built.
configure=()
if command -v ccache >/dev/null; then configure+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
cmake --preset fuzz "${configure[@]}" >/dev/null
targets=()
for name in "${names[@]}"; do targets+=("velmo_fuzz_$name"); done
nice cmake --build --preset fuzz --target "${targets[@]}" -- -j2

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
findings="build/fuzz/findings"
# Reports name functions and lines through LLVM's symbolizer, wherever the package put it.
if ! command -v llvm-symbolizer >/dev/null && [ -x /usr/lib/llvm-14/bin/llvm-symbolizer ]; then
  export ASAN_SYMBOLIZER_PATH=/usr/lib/llvm-14/bin/llvm-symbolizer
fi
# The sanitizers stop at the first report; leaks are looked for after every input.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"

failed=()
for name in "${names[@]}"; do
  corpus="$work/$name"
  mkdir -p "$corpus" "$findings/$name"
  for seeds in "tests/fuzz/corpus/$name" "tests/fuzz/regressions/$name"; do
    if [ -d "$seeds" ]; then cp -r "$seeds/." "$corpus/"; fi
  done
  log="$work/$name.log"
  echo "fuzz: $name for ${seconds}s"
  options=(-max_total_time="$seconds" -timeout=25 -detect_leaks=1 -print_final_stats=1
    -artifact_prefix="$findings/$name/")
  # Each input has 25 s: far beyond any the harnesses take, so only a hang reaches it. A harness
  # whose input names things (model classes and fields) has a dictionary of them.
  if [ -f "tests/fuzz/$name.dict" ]; then options+=(-dict="tests/fuzz/$name.dict"); fi
  status=0
  nice "build/fuzz/tests/fuzz/velmo_fuzz_$name" "${options[@]}" "$corpus" >"$log" 2>&1 || status=$?
  if [ "$status" -eq 0 ]; then
    grep -E '^#[0-9]+[[:space:]]+DONE' "$log" | tail -n 1 | sed 's/^/  /' || true
  else
    failed+=("$name")
    echo "fuzz: $name failed (exit $status); the end of its log:" >&2
    grep -v -E '^#[0-9]+[[:space:]]+(NEW|REDUCE|pulse|RELOAD)' "$log" | tail -n 60 >&2
    echo "fuzz: the input is kept under $findings/$name/" >&2
  fi
done

if [ ${#failed[@]} -ne 0 ]; then
  echo "fuzz: failed: ${failed[*]}" >&2
  exit 1
fi
