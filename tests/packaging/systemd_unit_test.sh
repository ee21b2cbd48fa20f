#!/usr/bin/env bash
# Installs the program and the service component (the unit and the reference
# configuration) into a temporary prefix and has systemd-analyze verify the
# installed unit, which checks its keys and that ExecStart's program is
# there. Without systemd-analyze it is skipped (status 77), but under CI
# (the CI environment variable set) it fails: there it must run.
#
# Set by tests/packaging/CMakeLists.txt: MRP_BUILD_DIR, MRP_CMAKE, the
# install directories relative to the prefix (MRP_BINDIR, MRP_UNIT_DIR,
# MRP_DOC_DIR, MRP_MANDIR).
set -euo pipefail

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

if ! command -v systemd-analyze >/dev/null; then
  [ -z "${CI:-}" ] || fail "systemd-analyze is needed under CI"
  echo "SKIP: no systemd-analyze"
  exit 77
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/mrp-unit.XXXXXX")
# A component's install writes install_manifest_<component>.txt into the
# build tree: one that was there is put back, a new one is not left behind.
components=(Unspecified service)
for component in "${components[@]}"; do
  manifest="$MRP_BUILD_DIR/install_manifest_$component.txt"
  if [ -e "$manifest" ]; then cp -p "$manifest" "$work/"; fi
done
cleanup() {
  for component in "${components[@]}"; do
    saved="$work/install_manifest_$component.txt"
    if [ -e "$saved" ]; then cp -p "$saved" "$MRP_BUILD_DIR/"; else rm -f "$MRP_BUILD_DIR/install_manifest_$component.txt"; fi
  done
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 1' INT TERM

prefix="$work/prefix"
for component in "${components[@]}"; do
  env -u DESTDIR "$MRP_CMAKE" --install "$MRP_BUILD_DIR" --prefix "$prefix" --component "$component" >/dev/null
done
unit="$prefix/$MRP_UNIT_DIR/mrp-agent.service"
[ -f "$unit" ] || fail "the unit is not installed at $MRP_UNIT_DIR/mrp-agent.service"
[ -f "$prefix/$MRP_DOC_DIR/agent.json" ] || fail "the reference configuration is not installed at $MRP_DOC_DIR"

echo "== the unit runs the installed program"
exec_start=$(sed -n 's/^ExecStart=//p' "$unit")
[ "$exec_start" = "$prefix/$MRP_BINDIR/mrp agent --config /etc/mrp/agent.json" ] ||
  fail "ExecStart is '$exec_start'"

echo "== systemd-analyze verify"
# Warnings about the unit do not fail verify: any line that names it does.
# The unit's Documentation= pages are looked up where they were installed.
if ! output=$(MANPATH="$prefix/$MRP_MANDIR" systemd-analyze verify "$unit" 2>&1); then
  fail "systemd-analyze verify failed: $output"
fi
if grep -F "mrp-agent.service" <<< "$output"; then
  fail "systemd-analyze verify warns about the unit"
fi
echo "== the unit verifies"
