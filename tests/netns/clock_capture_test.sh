#!/usr/bin/env bash
# A live exchange between two of our clocks, captured with tshark on the
# device of the first namespace: every datagram to the PTP ports decodes as
# PTP version 2, with a messageLength that fits the datagram, no part marked
# malformed and no expert item of error severity; and all five message types
# of the exchange are there.
#   clock_capture_test.sh <zmptp_clock>
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
clock=$1
# shellcheck source-path=SCRIPTDIR source=clock_common.sh
source "${here}/clock_common.sh"
netns_require_root
if ! command -v tshark >/dev/null 2>&1; then
  echo "FAIL: tshark is needed; run scripts/setup" >&2
  exit 1
fi

seconds=8

clock_test_start 2
# Decodes the capture; the display filter picks the frames, one line each.
frames() {
  tshark -r "${work}/capture.pcapng" -Y "$1" -T fields -e frame.number 2>/dev/null | grep -c .
}

capture="${work}/capture.pcapng"
netns_run 1 $((seconds + 15)) tshark -i "${NETNS_DEVICE}" -f "udp port 319 or udp port 320" \
  -a "duration:$((seconds + 2))" -w "${capture}" -q >"${work}/tshark.log" 2>&1 &
tshark_job=$!
if ! wait_for_line "${work}/tshark.log" "Capturing on" 10; then
  cat "${work}/tshark.log"
  echo "FAIL: tshark did not start capturing" >&2
  exit 1
fi
netns_run 1 $((seconds + 10)) "${clock}" --interface "${NETNS_DEVICE}" --priority1 100 \
  "${CLOCK_FAST[@]}" --duration "${seconds}" >"${work}/master.log" 2>&1 &
netns_run 2 $((seconds + 10)) "${clock}" --interface "${NETNS_DEVICE}" --priority1 200 \
  "${CLOCK_FAST[@]}" --duration "${seconds}" >"${work}/slave.log" 2>&1 &
wait "${tshark_job}"
wait

total=$(frames "frame")
echo "captured ${total} datagrams; by messageType:"
tshark -r "${capture}" -T fields -e ptp.v2.messagetype 2>/dev/null | sort | uniq -c
check "the slave reached SLAVE" grep -q -- '-> SLAVE$' "${work}/slave.log"
check "something was captured" test "${total}" -gt 50
check "every datagram decodes as PTP" test "$(frames '!ptp')" -eq 0
check "every message is version 2" test "$(frames 'ptp && ptp.v2.versionptp != 2')" -eq 0
check "no message is marked malformed or has an expert error" \
  test "$(frames '_ws.malformed || _ws.expert.severity >= 0x00800000')" -eq 0
check "every messageLength fits its datagram" \
  test "$(frames 'ptp.v2.messagelength + 8 != udp.length')" -eq 0
for type in 0x00:Sync 0x01:Delay_Req 0x08:Follow_Up 0x09:Delay_Resp 0x0b:Announce; do
  check "${type#*:} messages are there" test "$(frames "ptp.v2.messagetype == ${type%%:*}")" -gt 0
done
check "Sync goes to port 319, Follow_Up, Delay_Resp and Announce to 320" \
  test "$(frames '(ptp.v2.messagetype <= 3 && udp.dstport != 319) ||
                  (ptp.v2.messagetype >= 8 && udp.dstport != 320)')" -eq 0

[ "${failures}" -eq 0 ]
