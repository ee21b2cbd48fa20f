#!/usr/bin/env bash
# Builds libMrpSm and the mrp program, and runs them or the tests.
#
#   ./build.sh run     build (build/), then run the default network of `mrp sim`
#   ./build.sh test    build and run every test, plain (build/), optimised as a
#                      release is (-O3, build-release/) and under
#                      AddressSanitizer + UndefinedBehaviorSanitizer (build-san/),
#                      and the engine and platform suites under valgrind's memcheck
#                      (build-valgrind/), then each fuzz target for a bounded time
#                      (build-fuzz/, clang)
#   ./build.sh valgrind  only the memcheck run of `test`
#   ./build.sh soak    build mrp (-O3, build-release/), then the soak test,
#                      tools/soak/run.sh: an hour of simulated time, a minute
#                      or two of wall time; not part of `test` or CI
#
# Every configuration here treats warnings as errors (MRP_WERROR), so a new
# warning stops the build where it is made. Missing build tools and libraries
# are installed with apt-get first.
set -euo pipefail
cd "$(dirname "$0")"

PACKAGES=(cmake make g++ ccache googletest libgtest-dev libgmock-dev libbenchmark-dev tshark iproute2 clang pkgconf libpcap-dev nlohmann-json3-dev libcli11-dev valgrind prometheus-cpp-dev libsystemd-dev libgraphviz-dev libpng-dev chromium systemd scdoc man-db bash-completion)
FUZZ_SECONDS=${FUZZ_SECONDS:-60}
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
  # tshark asks whether unprivileged users may capture; the answer is no.
  echo "wireshark-common wireshark-common/install-setuid boolean false" | "${sudo[@]}" debconf-set-selections
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -q "${missing[@]}"
}

# ccache keyed on paths relative to the checkout, so clones share one cache.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1

configure() {  # [BUILD_TYPE=type] configure DIR [cmake options...]
  local dir=$1
  shift
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DMRP_WERROR=ON "$@" >/dev/null
}

build() {  # [BUILD_TYPE=type] build DIR [cmake options...]
  configure "$@"
  cmake --build "$1" -j "$JOBS"
}

run_tests() {  # run_tests DIR
  ctest --test-dir "$1" -j "$JOBS" --output-on-failure
}

# Each fuzz target runs over its corpus (fuzz/corpus/<target>/) and then
# explores for FUZZ_SECONDS, under ASan + UBSan; any crash fails the run.
# Its final coverage is printed on a line of its own: a figure that stays
# near the target's own size means the fuzzer cannot see the library.
run_fuzzers() {
  if ! command -v clang++ >/dev/null; then
    echo "build.sh: clang++ not found, fuzz targets not run"
    return
  fi
  CC=clang CXX=clang++ build build-fuzz -DMRP_BUILD_FUZZ=ON -DMRP_SANITIZE=ON -DMRP_BUILD_TESTS=OFF
  for target in build-fuzz/fuzz/*_fuzzer; do
    [ -x "$target" ] || continue
    local name corpus output
    name=$(basename "$target")
    corpus=$(mktemp -d)
    output=$(mktemp)
    cp -r "fuzz/corpus/${name%_fuzzer}/." "$corpus/" 2>/dev/null || true
    echo "build.sh: fuzzing $name for ${FUZZ_SECONDS}s"
    "$target" -max_total_time="$FUZZ_SECONDS" -print_final_stats=1 "$corpus" 2>&1 | tee "$output"
    echo "build.sh: $name final coverage: $(grep -o 'cov: [0-9]* ft: [0-9]*' "$output" | tail -n 1)"
    rm -rf "$corpus" "$output"
  done
}

# The engine and platform suites (tests/src, tests/platform) in one process
# under memcheck: any error or leak fails the run. The suites are read from
# the test sources, so a new suite there is included.
run_valgrind() {
  BUILD_TYPE=Debug build build-valgrind -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g"
  local suites filter
  suites=$(grep -rhoE '^(TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\( *[A-Za-z0-9_]+' tests/src tests/platform |
    sed -E 's/.*\( *//' | sort -u)
  filter=$(for suite in $suites; do printf '%s.*:*/%s.*:' "$suite" "$suite"; done)
  valgrind --tool=memcheck --error-exitcode=1 --leak-check=full --suppressions=tests/valgrind.supp \
    build-valgrind/tests/mrp_tests --gtest_filter="$filter"
}

case "${1:-}" in
  run)
    install_missing
    build build
    build/tools/mrp sim
    ;;
  test)
    install_missing
    build build -DMRP_BUILD_BENCH=ON
    run_tests build
    BUILD_TYPE=Release build build-release -DMRP_BUILD_BENCH=ON
    run_tests build-release
    build build-san -DMRP_SANITIZE=ON
    ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 run_tests build-san
    run_valgrind
    run_fuzzers
    ;;
  valgrind)
    install_missing
    run_valgrind
    ;;
  soak)
    install_missing
    # Configured as `test` configures its release build, so neither rebuilds the other's.
    BUILD_TYPE=Release configure build-release -DMRP_BUILD_BENCH=ON
    cmake --build build-release -j "$JOBS" --target mrp
    tools/soak/run.sh build-release/tools/mrp
    ;;
  *)
    echo "usage: ./build.sh run|test|valgrind|soak" >&2
    exit 2
    ;;
esac
