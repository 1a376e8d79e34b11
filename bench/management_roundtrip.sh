#!/usr/bin/env bash
# The round trip of a management GET from outside: linuxptp's pmc in one
# namespace asks our clock (zmptp_clock, master) in another for PRIORITY1,
# one request every 20 ms, while tshark records both directions at pmc's end
# of the veth pair. The round trip of each request is the time from its
# datagram to the response of the same sequenceId; printed as
#   management_roundtrip requests=<n> answered=<n> p50_us=<us> p99_us=<us> max_us=<us>
# Needs root (skipped otherwise), pmc and tshark.
#   management_roundtrip.sh <zmptp_clock> [requests]
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
clock=$1
requests=${2:-1000}
# shellcheck source-path=SCRIPTDIR source=../tests/netns/clock_common.sh
source "${here}/../tests/netns/clock_common.sh"
netns_require_root
for tool in pmc tshark; do
  command -v "${tool}" >/dev/null 2>&1 || {
    echo "FAIL: ${tool} is needed; run scripts/setup" >&2
    exit 1
  }
done
clock_test_start 2
seconds=$((requests / 50 + 10))
netns_run 1 $((seconds + 10)) "${clock}" --interface "${NETNS_DEVICE}" "${CLOCK_FAST[@]}" \
  --duration "${seconds}" >"${work}/ours.log" 2>&1 &
wait_for_line "${work}/ours.log" '-> MASTER$' 15 || {
  echo "FAIL: our clock did not become master" >&2
  exit 1
}
dotted=$(awk '/^clock / { print $2; exit }' "${work}/ours.log")
netns_run 2 "${seconds}" tshark -i "${NETNS_DEVICE}" -w "${work}/roundtrip.pcap" \
  -f "udp port 320 and udp[8] & 0x0f == 13" 2>/dev/null &
sniffer=$!
sleep 2
# pmc takes one command per wake-up: the requests come one by one.
(echo "TARGET ${dotted}-1" && for ((i = 0; i < requests; i++)); do
  sleep 0.02
  echo "GET PRIORITY1"
done && sleep 1) | netns_run 2 "${seconds}" pmc -4 -i "${NETNS_DEVICE}" -b 0 >/dev/null 2>&1
sleep 1
kill -INT "${sniffer}" 2>/dev/null
wait "${sniffer}"
tshark -r "${work}/roundtrip.pcap" -T fields -e frame.time_relative -e ptp.v2.sequenceid \
  -e ptp.v2.mm.action 2>/dev/null |
  awk '$3 == 0 { sent[$2] = $1 } $3 == 2 && ($2 in sent) { print ($1 - sent[$2]) * 1e6 }' |
  sort -n | awk -v requests="${requests}" '{ rtt[++n] = $1 }
  END {
    printf "management_roundtrip requests=%d answered=%d p50_us=%.0f p99_us=%.0f max_us=%.0f\n",
      requests, n, rtt[int((n + 1) / 2)], rtt[int(n * 0.99 + 0.999999)], rtt[n]
    exit n < requests
  }'
