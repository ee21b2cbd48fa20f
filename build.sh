#!/usr/bin/env bash
# Builds libMrpSm and the mrp program, and runs them or the tests.
#
#   ./build.sh run     build (build/), then run `mrp --help`
#   ./build.sh test    build and run every test, plain (build/) and under
#                      AddressSanitizer + UndefinedBehaviorSanitizer (build-san/)
#
# Missing build tools and libraries are installed with apt-get first.
set -euo pipefail
cd "$(dirname "$0")"

PACKAGES=(cmake make g++ googletest libgtest-dev libgmock-dev)
JOBS=$(nproc 2>/dev/null || echo 2)

install_missing() {
  local missing=()
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return
  local sudo=()
  [ "$(id -u)" -ne 0 ] && sudo=(sudo)
  echo "build.sh: installing ${missing[*]}"
  "${sudo[@]}" apt-get update -q
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -q "${missing[@]}"
}

build() {  # build DIR [cmake options...]
  local dir=$1
  shift
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
  cmake --build "$dir" -j "$JOBS"
}

run_tests() {  # run_tests DIR
  ctest --test-dir "$1" -j "$JOBS" --output-on-failure
}

case "${1:-}" in
  run)
    install_missing
    build build
    build/tools/mrp --help
    ;;
  test)
    install_missing
    build build
    run_tests build
    build build-san -DMRP_SANITIZE=ON
    ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 run_tests build-san
    ;;
  *)
    echo "usage: ./build.sh run|test" >&2
    exit 2
    ;;
esac
