#!/usr/bin/env bash
# Drives the bash completion of mrp as bash does: sources the script, sets
# COMP_WORDS, COMP_CWORD, COMP_LINE and COMP_POINT for a command line with the
# cursor at its end, calls the completion function and checks COMPREPLY. Then
# checks that every option `mrp <command> --help` lists is offered, so that
# the completion cannot drift from the program.
#
# Set by tests/docs/CMakeLists.txt: MRP_PROGRAM (the built mrp) and
# MRP_COMPLETION (the script).
set -uo pipefail
# shellcheck source=tests/docs/help_options.sh
source "$(dirname "$0")/help_options.sh"
# shellcheck source=dist/bash-completion/mrp
source "$MRP_COMPLETION"

failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

# The words offered for a command line given as its words, the last one the
# word being completed ('' for a new word); sorted, one line.
offered() {
  COMP_WORDS=("$@")
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  # bash splits "--app=mv" into "--app" "=" "mv"; the line has none of the spaces.
  COMP_LINE="${COMP_WORDS[*]}"
  COMP_LINE=${COMP_LINE// = /=}
  COMP_LINE=${COMP_LINE% =}
  [[ ${COMP_WORDS[COMP_CWORD]} == = ]] && COMP_LINE+="="
  COMP_POINT=${#COMP_LINE}
  COMPREPLY=()
  _mrp mrp "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
  printf '%s\n' "${COMPREPLY[@]}" | sed '/^$/d' | sort | tr '\n' ' ' | sed 's/ $//'
}

# expect "WORDS OFFERED" WORD...: exactly those words are offered.
expect() {
  local wanted=$1
  shift
  local got
  got=$(offered "$@")
  wanted=$(tr ' ' '\n' <<< "$wanted" | sed '/^$/d' | sort | tr '\n' ' ' | sed 's/ $//')
  [ "$got" = "$wanted" ] || fail "'$*': offered '$got', not '$wanted'"
}

# expect_among "WORD" WORD...: the word is among those offered.
expect_among() {
  local wanted=$1
  shift
  [[ " $(offered "$@") " == *" $wanted "* ]] || fail "'$*': '$wanted' is not offered ($(offered "$@"))"
}

# File names come from a directory of known content.
files=$(mktemp -d "${TMPDIR:-/tmp}/mrp-completion.XXXXXX")
trap 'rm -rf "$files"' EXIT
cd "$files" || exit 1
mkdir captures
touch scenario.json capture.pcap

# An interface the kernel lists; there is always one (lo at least).
interfaces=(/sys/class/net/*)
interface=${interfaces[0]##*/}

expect "decode sim replay agent ctl"                 mrp ''
expect "decode"                                      mrp de
expect "-h --help -V --version"                      mrp -
expect "--help"                                      mrp --h
expect "declare withdraw show counters ports streams trace"  mrp ctl ''
expect "show streams"                                mrp ctl s
expect "declare withdraw show counters ports streams trace"  mrp ctl --control /tmp/x.sock ''
expect "declare withdraw show counters ports streams trace"  mrp ctl --json ''
expect "off"                                         mrp ctl trace ''
expect ""                                            mrp ctl show ''
expect ""                                            mrp ctl declare ''
expect "-h --help --control --json"                  mrp ctl -
expect "--app"                                       mrp decode --ap
expect "msrp mvrp"                                   mrp decode --app ''
expect "mvrp"                                        mrp decode --app mv
expect "msrp mvrp"                                   mrp decode --app =
expect "mvrp"                                        mrp decode --app = mv
expect "msrp mvrp"                                   mrp replay --app ''
expect ""                                            mrp decode --hex ''
expect "captures capture.pcap scenario.json"         mrp decode ''
expect "captures capture.pcap scenario.json"         mrp decode --app mvrp ''
expect "capture.pcap captures"                       mrp replay cap
expect ""                                            mrp replay capture.pcap ''
expect "captures capture.pcap scenario.json"         mrp sim ''
expect "scenario.json"                               mrp sim --json sc
expect "captures"                                    mrp sim --pcap ''
expect ""                                            mrp sim --until ''
expect ""                                            mrp sim --rss-every ''
expect "capture.pcap captures"                       mrp replay --out cap
expect ""                                            mrp replay --from ''
expect "scenario.json"                               mrp agent --config s
expect "msrp mvrp"                                   mrp agent --apps ''
expect "mvrp,msrp"                                   mrp agent --apps mvrp,
expect ""                                            mrp agent --apps mvrp,msrp,
expect ""                                            mrp agent --metrics ''
expect_among "$interface"                            mrp agent --ports ''
expect_among "--ports"                               mrp agent --json -
[[ " $(offered mrp agent --ports "$interface,") " != *" $interface,$interface "* ]] ||
  fail "'mrp agent --ports $interface,' offers $interface again"

# Every option of every command's --help is offered after "-".
for command in "${MRP_COMMANDS[@]}"; do
  options=$("$MRP_PROGRAM" ${command:+"$command"} --help | help_options)
  [ -n "$options" ] || fail "mrp $command --help lists no options"
  offers=" $(offered mrp ${command:+"$command"} -) "
  for option in $options; do
    [[ $offers == *" $option "* ]] || fail "'mrp${command:+ $command} -' does not offer $option of its --help"
  done
done

[ "$failures" -eq 0 ] || exit 1
echo "bash completion: every case and every option of ${#MRP_COMMANDS[@]} commands offered"
