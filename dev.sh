#!/usr/bin/env bash
# One entry point for a fresh machine: installs what is missing, builds, then runs Kivo or every test.
#   ./dev.sh run [kivo arguments...]   build and run Kivo
#   ./dev.sh test                      build and run all tests, then again with sanitizers
#   ./dev.sh package                   build the Debian package kivo_<version>_<arch>.deb here
set -euo pipefail
cd "$(dirname "$0")"

jobs=$(nproc 2>/dev/null || echo 2)

configure_and_build() {
  local dir=$1
  shift
  cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
  cmake --build "$dir" --parallel "$jobs"
}

command=${1:-}
[ $# -gt 0 ] && shift
case "$command" in
  run)
    scripts/setup
    configure_and_build build -DCMAKE_BUILD_TYPE=RelWithDebInfo
    exec build/src/app/kivo "$@"
    ;;
  test)
    scripts/setup
    configure_and_build build -DCMAKE_BUILD_TYPE=RelWithDebInfo
    ctest --test-dir build --output-on-failure --parallel "$jobs"
    configure_and_build build-sanitize -DCMAKE_BUILD_TYPE=Debug -DKIVO_SANITIZE=ON -DKIVO_BUILD_BENCHMARKS=OFF
    LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp" \
      ctest --test-dir build-sanitize --output-on-failure --parallel "$jobs"
    ;;
  package)
    scripts/setup
    configure_and_build build-package -DCMAKE_BUILD_TYPE=Release -DKIVO_BUILD_TESTS=OFF \
      -DKIVO_BUILD_BENCHMARKS=OFF
    cpack --config build-package/CPackConfig.cmake -B build-package/packages
    cp build-package/packages/*.deb .
    ls ./*.deb
    ;;
  *)
    echo "usage: ./dev.sh run [arguments] | ./dev.sh test | ./dev.sh package" >&2
    exit 2
    ;;
esac
