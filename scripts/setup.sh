#!/usr/bin/env bash
# Sets up a Debian 12 machine for Velmo and runs the main job on the bundled example:
# installs the Debian packages the project needs (idempotent), configures and builds the
# release preset, then repairs the sample document, examples/document.json, with `velmo repair` and
# shows what it holds with `velmo info`.
#
#   scripts/setup.sh            install, build, run the example
#   scripts/setup.sh --deps     install the packages only
set -euo pipefail
cd "$(dirname "$0")/.."

PACKAGES=(
  build-essential g++ cmake ninja-build pkg-config git
  libboost1.81-dev libboost-url1.81-dev rapidjson-dev libfmt-dev libcli11-dev
  libcurl4-openssl-dev libssl-dev uuid-dev libzip-dev zlib1g-dev libsecret-1-dev libglib2.0-dev libfontconfig-dev
  libgtest-dev libgmock-dev libbenchmark-dev libcpp-httplib-dev nlohmann-json3-dev libsqlitecpp-dev libsqlite3-dev
  clang-14 libfuzzer-14-dev libclang-rt-14-dev llvm-14
  gnome-keyring dbus fonts-dejavu-core
  curl zip unzip ca-certificates
)

install_packages() {
  local missing=()
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  if [ ${#missing[@]} -eq 0 ]; then
    return 0
  fi
  local sudo=""
  if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
  echo "Installing: ${missing[*]}"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

install_packages
if [ "${1:-}" = "--deps" ]; then
  exit 0
fi

cmake --preset release >/dev/null
cmake --build --preset release --target velmo_cli
./build/release/cli/velmo repair examples/document.json -o build/release/document.json
./build/release/cli/velmo info build/release/document.json
