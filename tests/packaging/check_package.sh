#!/usr/bin/env bash
# Packs the build tree as a .deb in a scratch folder and runs lintian on it; any error fails.
set -euo pipefail
build=$1 lintian=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$scratch" >"$scratch/cpack.log" 2>&1 \
  || { cat "$scratch/cpack.log"; exit 1; }
package=$(ls "$scratch"/*.deb)
dpkg-deb --field "$package" Package Version Depends Recommends
# Errors only: warnings are for a human to weigh, not for the test to fail on.
status=0
"$lintian" --fail-on error "$package" >"$scratch/lintian.log" 2>&1 || status=$?
grep -v "running with root privileges" "$scratch/lintian.log" || true
exit "$status"
