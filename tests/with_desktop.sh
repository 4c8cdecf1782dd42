#!/usr/bin/env bash
# Runs a command on a desktop of its own: an X server that draws into memory, and a window manager. The environment
# variables that describe the desktop of the user are unset, so that they have no effect on the command.
#   with_desktop.sh COMMAND ARGUMENT...
# Needs Xvfb, openbox and xprop.
set -u
folder=$(mktemp -d)
trap 'kill $manager $server 2>/dev/null; wait; rm -rf "$folder"' EXIT

# Without -noreset, the server would reset when its last client leaves, and could lose a client that is just connecting.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$folder/display" 2>/dev/null &
server=$!
for _ in $(seq 300); do [ -s "$folder/display" ] && break; sleep 0.1; done
DISPLAY=:$(cat "$folder/display")
export DISPLAY QT_QPA_PLATFORM=xcb
unset XDG_CURRENT_DESKTOP DESKTOP_SESSION KDE_FULL_SESSION QT_STYLE_OVERRIDE QT_QPA_PLATFORMTHEME QT_SCALE_FACTOR
openbox --sm-disable >/dev/null 2>&1 &
manager=$!
for _ in $(seq 300); do
  xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
  sleep 0.1
done

"$@"
