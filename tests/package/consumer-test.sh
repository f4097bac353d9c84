#!/usr/bin/env bash
# Installs a build's library component into a temporary prefix, checks what was installed, and
# builds and runs tests/package/consumer against it with find_package(Velmo) and with pkg-config.
#
#   consumer-test.sh BUILD_DIR SOURCE_DIR LIBDIR CXX SANITIZERS LEFT_OUT_HEADERS
#   (SANITIZERS and LEFT_OUT_HEADERS are ;-separated lists, possibly empty)
set -euo pipefail
build=$(cd "$1" && pwd) source=$(cd "$2" && pwd) libdir=$3 cxx=$4 sanitizers=$5 left_out=$6
consumer="$source/tests/package/consumer"
expected="VDModelView screen 320 1"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"
fail() {
    echo "FAILED: $*" >&2
    exit 1
}
# Runs a step quietly, showing its output only when it fails.
step() {
    local log="$work/step.log"
    "$@" >"$log" 2>&1 || { cat "$log" >&2; fail "$*"; }
}
flags=()
[ -z "$sanitizers" ] || flags=("-fsanitize=${sanitizers//;/,}")

step cmake --install "$build" --prefix "$prefix" --component library

# What was installed: headers whose own includes are all there, none of the internals, the
# resources, and no path of the build machine's source or build tree.
cd "$prefix/include"
while read -r header; do
    [ -f "$header" ] || fail "an installed header includes $header, which is not installed"
done < <(grep -rhoE '^#include "velmo/[^"]+"' . | sed -E 's/^#include "(.*)"$/\1/' | sort -u)
IFS=';' read -r -a internals <<<"$left_out"
for header in "${internals[@]}"; do
    [ ! -e "$header" ] || fail "the internal header $header is installed"
done
[ -f "$prefix/share/velmo/resources/plugin_config.json" ] || fail "the resources folder is not installed"
! grep -rqF -e "$source" -e "$build" "$prefix/$libdir/cmake" "$prefix/$libdir/pkgconfig" ||
    fail "the package files name the build machine's folders"

# find_package(Velmo)
step cmake -S "$consumer" -B "$work/cmake" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="${flags[*]:-}"
step cmake --build "$work/cmake"
output=$("$work/cmake/consumer") || fail "the find_package build did not run"
[ "$output" = "$expected" ] || fail "the find_package build printed '$output'"

# pkg-config: no include folders of the private dependencies, and the static link works.
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
cflags=$(pkg-config --cflags velmo)
case "$cflags" in
*glib* | *freetype* | *libsecret*) fail "pkg-config --cflags velmo gives the private dependencies' folders: $cflags" ;;
esac
[ -f "$(pkg-config --variable=libdir velmo)/libvelmo.a" ] || [ -f "$(pkg-config --variable=libdir velmo)/libvelmo.so" ] ||
    fail "the pkg-config libdir holds no library: $(pkg-config --variable=libdir velmo)"
# shellcheck disable=SC2046,SC2086 # the flags are words
step "$cxx" "${flags[@]}" $cflags "$consumer/main.cpp" -o "$work/pkg-config-consumer" $(pkg-config --static --libs velmo)
output=$("$work/pkg-config-consumer") || fail "the pkg-config build did not run"
[ "$output" = "$expected" ] || fail "the pkg-config build printed '$output'"
echo "installed package: find_package and pkg-config consumers build and run"
