#!/usr/bin/env bash
# Installs the build tree into a temporary prefix and moves the prefix (the
# package must not depend on where it was installed), checks what was
# installed, then builds and runs the out-of-tree consumer against it twice:
# through find_package(MrpSm) and through pkg-config. Everything it writes is
# under its temporary directory, which it removes.
#
# Set by tests/packaging/CMakeLists.txt: MRP_BUILD_DIR, MRP_CONSUMER_DIR,
# MRP_VERSION, the install directories relative to the prefix (MRP_LIBDIR,
# MRP_BINDIR, MRP_HEADER_DIR, MRP_MANDIR, MRP_DATADIR, MRP_UNIT_DIR, MRP_DOC_DIR),
# the man pages' sources (MRP_MAN_SOURCE_DIR), the tools (MRP_CMAKE, MRP_CXX,
# MRP_PKG_CONFIG) and the consumer's flags (MRP_CONSUMER_CXXFLAGS, MRP_CONSUMER_LDFLAGS).
set -euo pipefail

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

work=$(mktemp -d "${TMPDIR:-/tmp}/mrpsm-package.XXXXXX")
# cmake --install writes its manifest into the build tree: the manifest of an
# earlier real install is put back, and a new one is not left behind.
manifest="$MRP_BUILD_DIR/install_manifest.txt"
had_manifest=false
if [ -e "$manifest" ]; then
  cp -p "$manifest" "$work/install_manifest.txt"
  had_manifest=true
fi
cleanup() {
  if $had_manifest; then cp -p "$work/install_manifest.txt" "$manifest"; else rm -f "$manifest"; fi
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 1' INT TERM

env -u DESTDIR "$MRP_CMAKE" --install "$MRP_BUILD_DIR" --prefix "$work/installed"
prefix="$work/moved"
mv "$work/installed" "$prefix"
libdir="$prefix/$MRP_LIBDIR"
headers="$prefix/$MRP_HEADER_DIR"

echo "== what was installed"
# The library with its soname and links, its headers, the mrp program with
# its man pages and bash completion, the two package descriptions, the
# agent's systemd unit and its reference configuration; nothing of the
# agent's bridge or the tests.
unexpected=$(cd "$prefix" && find . \( -type f -o -type l \) | sed 's|^\./||' | grep -v -x \
  -e "$MRP_BINDIR/mrp" \
  -e "$MRP_MANDIR/man[58]/mrp[a-z.-]*\.[58]" \
  -e "$MRP_DATADIR/bash-completion/completions/mrp" \
  -e "$MRP_LIBDIR/libMrpSm\.so" -e "$MRP_LIBDIR/libMrpSm\.so\.0" -e "$MRP_LIBDIR/libMrpSm\.so\.$MRP_VERSION" \
  -e "$MRP_LIBDIR/cmake/MrpSm/MrpSm[A-Za-z-]*\.cmake" \
  -e "$MRP_LIBDIR/pkgconfig/mrpsm\.pc" \
  -e "$MRP_UNIT_DIR/mrp-agent\.service" -e "$MRP_DOC_DIR/agent\.json" \
  -e "$MRP_HEADER_DIR/[A-Za-z0-9_]*/[A-Za-z0-9_]*\.h" || true)
[ -z "$unexpected" ] || fail "installed beyond the package: $unexpected"
[ "$(readlink "$libdir/libMrpSm.so")" = libMrpSm.so.0 ] || fail "libMrpSm.so does not link to libMrpSm.so.0"
[ "$(readlink "$libdir/libMrpSm.so.0")" = "libMrpSm.so.$MRP_VERSION" ] ||
  fail "libMrpSm.so.0 does not link to libMrpSm.so.$MRP_VERSION"
soname=$(readelf -d "$libdir/libMrpSm.so.$MRP_VERSION" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = libMrpSm.so.0 ] || fail "soname is '$soname', not libMrpSm.so.0"

echo "== headers"
for header in MrpSm/MrpSm.h MrpSm/MrpLib.h MrpModel/MrpConfig.h MrpModel/MrpStatus.h quarn/EventLoop.h \
  quarn/System.h velo/PacketSocketPam.h velo/MemPam.h bridging/Config.h stp/Status.h \
  interface/AllEthPhyIntfStatusDir.h hive/EntityManager.h; do
  [ -f "$headers/$header" ] || fail "public header $header is not installed"
done
for header in MrpSm/MrpValueFields.h MrpSm/MrpSmTrace.h MrpSm/MrpSmLog.h MrpSm/MrpPduReader.h \
  MrpSm/MrpVectorEncoder.h lumen/TraceRing.h; do
  [ ! -e "$headers/$header" ] || fail "internal header $header is installed"
done
# Every project header an installed header includes is installed too.
while read -r header; do
  for included in $(sed -n 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*"\([^"]*\)".*/\1/p' "$header"); do
    [ -f "$headers/$included" ] || fail "${header#"$headers/"} includes $included, which is not installed"
  done
done < <(find "$headers" -name '*.h')

echo "== the installed mrp finds the library beside it, and Graphviz's plugins in their directory"
version=$("$prefix/$MRP_BINDIR/mrp" --version)
[ "$version" = "mrp $MRP_VERSION" ] || fail "mrp --version printed '$version'"
"$prefix/$MRP_BINDIR/mrp" sim --until 5 --html "$work/report.html" >/dev/null || fail "the installed mrp sim --html failed"
grep -q '<div id="topology"><svg ' "$work/report.html" || fail "the installed mrp drew no network"

echo "== man pages and bash completion"
# Each page in its section's directory, where man finds it by name.
for source in "$MRP_MAN_SOURCE_DIR"/*.scd; do
  page=$(basename "$source" .scd)
  section=${page##*.}
  [ -s "$prefix/$MRP_MANDIR/man$section/$page" ] || fail "man page $page is not installed in man$section"
  found=$(MANPATH="$prefix/$MRP_MANDIR" man -w "$section" "${page%.*}" 2>/dev/null) || true
  [ "$found" = "$prefix/$MRP_MANDIR/man$section/$page" ] || fail "man does not find $page in the prefix (found '$found')"
done
# Where bash-completion looks for a command's completion by the command's name.
completion="$prefix/$MRP_DATADIR/bash-completion/completions/mrp"
[ -f "$completion" ] || fail "the bash completion of mrp is not installed"
bash -c 'source "$1" && complete -p mrp' _ "$completion" >/dev/null || fail "the installed completion does not complete mrp"

read -ra cxxflags <<< "$MRP_CONSUMER_CXXFLAGS"
read -ra ldflags <<< "$MRP_CONSUMER_LDFLAGS"

echo "== consumer through find_package(MrpSm)"
"$MRP_CMAKE" -S "$MRP_CONSUMER_DIR" -B "$work/find-package" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_FIND_PACKAGE_NO_PACKAGE_REGISTRY=ON -DCMAKE_CXX_COMPILER="$MRP_CXX" \
  -DCMAKE_CXX_FLAGS="$MRP_CONSUMER_CXXFLAGS" -DCMAKE_EXE_LINKER_FLAGS="$MRP_CONSUMER_LDFLAGS"
grep -q -x "MrpSm_DIR:PATH=$libdir/cmake/MrpSm" "$work/find-package/CMakeCache.txt" ||
  fail "find_package found another MrpSm: $(grep MrpSm_DIR "$work/find-package/CMakeCache.txt")"
"$MRP_CMAKE" --build "$work/find-package"
"$work/find-package/consumer"

echo "== consumer through pkg-config (mrpsm)"
export PKG_CONFIG_PATH="$libdir/pkgconfig"
[ "$("$MRP_PKG_CONFIG" --modversion mrpsm)" = "$MRP_VERSION" ] || fail "mrpsm.pc has another version"
read -ra pkgflags <<< "$("$MRP_PKG_CONFIG" --cflags --libs mrpsm)"
pkglibdir=$("$MRP_PKG_CONFIG" --variable=libdir mrpsm)
"$MRP_CXX" -std=c++20 "${cxxflags[@]}" "$MRP_CONSUMER_DIR/main.cpp" -o "$work/pkg-config-consumer" \
  "${pkgflags[@]}" "${ldflags[@]}" -Wl,-rpath,"$pkglibdir"
"$work/pkg-config-consumer"

echo "== the installed package works"
