#!/bin/sh
# own-keyring.sh unlocked|locked|none COMMAND...: runs COMMAND on this session bus with a keyring
# of its own in a new folder: "unlocked" and "locked" start with an unlocked login keyring (the
# locked run's test locks it), "none" starts the service with no keyring at all.
set -e
state=$1
shift
XDG_DATA_HOME=$(mktemp -d)
export XDG_DATA_HOME VELMO_KEYCHAIN_OWN_KEYRING="$state"
trap 'rm -rf "$XDG_DATA_HOME"' EXIT
if [ "$state" = unlocked ] || [ "$state" = locked ]; then
  printf %s velmo-test | gnome-keyring-daemon --unlock --components=secrets >/dev/null 2>&1
else
  gnome-keyring-daemon --start --components=secrets >/dev/null 2>&1
fi
"$@"
