#!/usr/bin/env bash
# The soak test: `mrp sim` runs soak.json (eight bridges in a ring broken by
# an alternate port, two servers that each declare all 4094 VLANs, a stream,
# randomised LeaveAll) for an hour of simulated time and samples its own
# resident set every simulated minute. It passes when
#
#  - the resident set does not grow by more than 1 % after the first ten
#    simulated minutes (every later sample against the one at 600 s),
#  - no leave indication is given (the scenario withdraws nothing and cuts
#    no link, so any leave is a registration lost to a LeaveAll),
#  - the final tables hold every VLAN registration the topology makes, and
#  - LeaveAlls were sent: at least one per link and application in every
#    longest period (1.5 x 10 s), so that the hour really exercised them.
#
#   tools/soak/run.sh [MRP]     MRP defaults to build-release/tools/mrp
#
# What it ran is kept in SOAK_DIR (a new temporary directory by default):
# timeline.jsonl (the JSON timeline without the frames that carry no
# LeaveAll), rss.jsonl (the samples) and stderr.txt (anything else).
# Exits 0 with one "soak: PASS" line, or 1 with a "soak: FAIL" line per
# failed check.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
mrp=${1:-$here/../../build-release/tools/mrp}
scenario=$here/soak.json
dir=${SOAK_DIR:-$(mktemp -d)}
mkdir -p "$dir"

readonly UNTIL=3600
readonly SETTLED=600          # samples from here on are compared
readonly MAX_GROWTH_PERCENT=1
readonly LINKS=10 APPLICATIONS=2 LONGEST_LEAVEALL_PERIOD=15
# 4094 VLANs on each port that has a declarer behind it: h1 and h2; sw1's
# p1 and p3; sw2, sw3 and sw4's p1 (towards sw1: the branch behind them
# ends at the alternate port, so nothing is declared towards sw1 through
# it); sw5's p1 (the alternate port hears sw4), p2 and p3; sw6, sw7 and
# sw8's p1 and p2. 16 ports.
readonly VLAN_REGISTRATIONS=$((16 * 4094))

[ -x "$mrp" ] || { echo "soak: FAIL: no mrp program at $mrp (build it: ./build.sh soak)"; exit 1; }
echo "soak: running $mrp sim $scenario for $UNTIL s of simulated time; output in $dir"
started=$(date +%s)
set +e
"$mrp" sim "$scenario" --json --until "$UNTIL" --rss-every 60 2>"$dir/stderr.txt" |
  awk -v leaveAllCount="$dir/leaveall-frames" '
    /"tx": / { if (/"leaveAll": \[[0-9]/) frames++; next }
    { print }
    END { print frames + 0 > leaveAllCount }' >"$dir/timeline.jsonl"
status=${PIPESTATUS[0]}
set -e
wall=$(($(date +%s) - started))
grep '^{"t": ' "$dir/stderr.txt" >"$dir/rss.jsonl" || true

failed=0
fail() {
  echo "soak: FAIL: $*"
  failed=1
}

if [ "$status" -ne 0 ]; then
  fail "mrp sim exited with status $status: $(grep -v '^{"t": ' "$dir/stderr.txt" | head -n 3)"
fi

# "t rss" per sample.
samples=$(sed -n 's/^{"t": \([0-9.]*\), "rss": \([0-9]*\)}$/\1 \2/p' "$dir/rss.jsonl")
rss=$(echo "$samples" | awk -v settled="$SETTLED" -v limit="$MAX_GROWTH_PERCENT" '
  $1 + 0 == settled { base = $2 }
  $1 + 0 > settled { if ($2 > peak) peak = $2; last = $2; later++ }
  END {
    if (!base || !later) { print "missing"; exit }
    growth = (peak - base) * 100 / base
    printf "%s %.1f %.1f %.1f %.3f %d\n", (growth > limit ? "grew" : "ok"), base / 1048576, last / 1048576,
           peak / 1048576, growth, later
  }')
read -r verdict base last peak growth later <<<"$rss"
case "$verdict" in
  missing) fail "no resident set sample at $SETTLED s or after it (see $dir/stderr.txt)" ;;
  grew) fail "the resident set grew by $growth % after $SETTLED s (limit $MAX_GROWTH_PERCENT %):" \
          "$base MiB at $SETTLED s, $peak MiB at its largest" ;;
esac

leaves=$(grep -c '"indication": "leave"' "$dir/timeline.jsonl" || true)
if [ "$leaves" -ne 0 ]; then
  fail "$leaves leave indications, none expected; the first: $(grep -m 1 '"indication": "leave"' "$dir/timeline.jsonl")"
fi

# A VLAN held IN, as the registrations lines list it.
vlan_registered='"app": "mvrp", "type": 1, "key": "[0-9]*", "value": "[0-9a-f]*", "vlan": [0-9]*, "registrar": "IN"'
registrations=$({ grep '"registrations": ' "$dir/timeline.jsonl" || true; } |
  { grep -o "$vlan_registered" || true; } | wc -l)
if [ "$registrations" -ne "$VLAN_REGISTRATIONS" ]; then
  fail "$registrations VLAN registrations at the end, $VLAN_REGISTRATIONS expected"
fi

frames=$(cat "$dir/leaveall-frames" 2>/dev/null || echo 0)
least=$((LINKS * APPLICATIONS * (UNTIL / LONGEST_LEAVEALL_PERIOD - 1)))
if [ "$frames" -lt "$least" ]; then
  fail "$frames frames carried a LeaveAll, at least $least expected"
fi

[ "$failed" -eq 0 ] || exit 1
echo "soak: PASS: $UNTIL s simulated in $wall s of wall time; resident set $base MiB at $SETTLED s, $last MiB at" \
  "the end, $peak MiB at its largest after $SETTLED s (+$growth %, $later samples); 0 leave indications;" \
  "$frames LeaveAll frames; $registrations VLAN registrations"
