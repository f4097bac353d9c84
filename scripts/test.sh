#!/usr/bin/env bash
# Sets up the machine (the packages of scripts/setup.sh), builds the debug preset and runs every
# test through ctest. The secret-store tests need a session bus with an unlocked keyring, so the
# suite runs inside its own dbus session with gnome-keyring started there. With the debug preset,
# the fuzzers then run for a while each (scripts/fuzz.sh): VELMO_FUZZ_SECONDS per harness,
# 30 by default, 0 to leave them out.
#
#   scripts/test.sh [preset]    preset: debug (default), asan or tsan
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-debug}"

scripts/setup.sh --deps
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"

export VELMO_TEST_PRESET="$preset"
# The keyring lives in a folder of its own for the run, so the suite never touches the user's
# login keyring, and a keyring left by an earlier run with another password can't be locked.
dbus-run-session -- bash -c '
  set -euo pipefail
  export XDG_DATA_HOME="$(mktemp -d)"
  trap "rm -rf \"$XDG_DATA_HOME\"" EXIT
  echo -n velmo-test | gnome-keyring-daemon --unlock --components=secrets >/dev/null 2>&1 || true
  ctest --preset "$VELMO_TEST_PRESET" --no-tests=error -j2
' 2> >(grep -v -e "Failed to set fd limit" -e "Activating service" -e "Successfully activated" >&2)

fuzz_seconds="${VELMO_FUZZ_SECONDS:-30}"
if [ "$preset" = debug ] && [ "$fuzz_seconds" != 0 ]; then
  scripts/fuzz.sh --seconds "$fuzz_seconds"
fi
