#!/usr/bin/env bash
# Sets up the machine (the packages of scripts/setup.sh), builds the debug preset and runs every
# test through ctest. The secret-store tests need a session bus with an unlocked keyring, so the
# suite runs inside its own dbus session with gnome-keyring started there.
#
#   scripts/test.sh [preset]    preset: debug (default), asan or tsan
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-debug}"

scripts/setup.sh --deps
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"

export VELMO_TEST_PRESET="$preset"
dbus-run-session -- bash -c '
  set -euo pipefail
  echo -n velmo-test | gnome-keyring-daemon --unlock --components=secrets >/dev/null 2>&1 || true
  ctest --preset "$VELMO_TEST_PRESET" --no-tests=error -j2
'
