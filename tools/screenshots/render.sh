#!/usr/bin/env bash
# Renders every section of the main window, the tray menu, the date picker, the missing-backend
# warning, the empty state, the editors, the application chooser and the settings window, light
# and dark, at 1280x800 and 800x600, into PNG files.
#   tools/screenshots/render.sh [BUILD_DIR] [OUTPUT_DIR]
# Needs what scripts/setup installs (Xvfb) and fonts that fontconfig finds (fonts-dejavu-core,
# which Debian installs with fontconfig). Runs on a private X server it starts and stops itself.
set -euo pipefail
build=${1:-build}
output=${2:-screenshots}
cmake --build "$build" --target kivo_screenshots --parallel 2 >/dev/null

display=:$((RANDOM % 1000 + 5000))
Xvfb "$display" -screen 0 1600x1000x24 -nolisten tcp -noreset >/dev/null 2>&1 &
xvfb=$!
trap 'kill "$xvfb" 2>/dev/null || true' EXIT
for _ in $(seq 50); do
  [ -e "/tmp/.X11-unix/X${display#:}" ] && break
  sleep 0.1
done

export DISPLAY=$display QT_QPA_PLATFORM=xcb QT_QPA_PLATFORMTHEME=
for theme in light dark; do
  for size in 1280x800 800x600; do
    "$build/tools/kivo_screenshots" "$output" "$theme" "$size"
  done
done
echo "screenshots in $output"
