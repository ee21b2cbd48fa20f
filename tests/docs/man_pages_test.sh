#!/usr/bin/env bash
# Checks the built man pages: every page was made and renders without
# warnings, has the sections a page of its kind needs and names only pages
# that exist; every option `mrp <command> --help` lists is in the command's
# page, so that a new option cannot go undocumented.
#
# Set by tests/docs/CMakeLists.txt: MRP_PROGRAM (the built mrp),
# MRP_MAN_SOURCE_DIR (doc/man) and MRP_MAN_BUILD_DIR (the troff pages).
set -euo pipefail
# shellcheck source=tests/docs/help_options.sh
source "$(dirname "$0")/help_options.sh"

failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

# The page's text as a reader finds it in the troff: font changes dropped,
# escaped hyphens plain.
page_text() {
  sed -e 's/\\f[BIRP]//g' -e 's/\\-/-/g' -e 's/\\(em/--/g' "$1"
}

pages=()
for source in "$MRP_MAN_SOURCE_DIR"/*.scd; do
  page=$(basename "$source" .scd)
  pages+=("$page")
  troff="$MRP_MAN_BUILD_DIR/$page"
  if [ ! -s "$troff" ]; then
    fail "$page: not built ($troff)"
    continue
  fi
  if command -v groff >/dev/null; then
    warnings=$(LC_ALL=C.UTF-8 groff -man -Tutf8 -ww -z "$troff" 2>&1) || fail "$page: groff failed"
    [ -z "$warnings" ] || fail "$page: groff warns: $warnings"
  fi
  sections=(NAME SYNOPSIS DESCRIPTION "SEE ALSO")
  [[ $page == *.8 ]] && sections+=(OPTIONS "EXIT STATUS")
  for section in "${sections[@]}"; do
    grep -q -x "\.SH $section" "$troff" || fail "$page: no $section section"
  done
done

# Every mrp page a page refers to, e.g. mrp-agent.json(5), is one of them.
for page in "${pages[@]}"; do
  [ -e "$MRP_MAN_BUILD_DIR/$page" ] || continue
  for reference in $(page_text "$MRP_MAN_BUILD_DIR/$page" | grep -o 'mrp[a-z.-]*([0-9])' | sort -u); do
    name=${reference%(*}
    section=${reference#*(}
    section=${section%)}
    [ -e "$MRP_MAN_SOURCE_DIR/$name.$section.scd" ] || fail "$page refers to $reference, which is no page"
  done
done

for command in "${MRP_COMMANDS[@]}"; do
  page=mrp${command:+-$command}.8
  label="mrp${command:+ $command}"
  [ -e "$MRP_MAN_BUILD_DIR/$page" ] || { fail "$label: no page $page"; continue; }
  options=$("$MRP_PROGRAM" ${command:+"$command"} --help | help_options)
  [ -n "$options" ] || fail "$label --help lists no options"
  text=$(page_text "$MRP_MAN_BUILD_DIR/$page")
  for option in $options; do
    grep -q -w -e "$option" <<< "$text" || fail "$page does not document $option of '$label --help'"
  done
done

[ "$failures" -eq 0 ] || exit 1
echo "man pages: ${#pages[@]} pages, every option of ${#MRP_COMMANDS[@]} commands documented"
