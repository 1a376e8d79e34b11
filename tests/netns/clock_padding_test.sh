#!/usr/bin/env bash
# Event messages of the old fixed size. A hand-built master (legacy_peer.py)
# sets bit 0x10 in the first byte of its messages: our slave's Delay_Req
# messages must then leave as 124-byte datagrams instead of 44. The padding
# stays after the master stops setting the bit, and ends with the next close
# of the network: the test takes our link down and up, automatic recovery
# closes and reopens the network, and the next Delay_Req messages are 44
# bytes again.
#   clock_padding_test.sh <zmptp_clock> [python3]
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
clock=$1
python=${2:-python3}
# shellcheck source-path=SCRIPTDIR source=clock_common.sh
source "${here}/clock_common.sh"
netns_require_root
if ! command -v "${python}" >/dev/null 2>&1; then
  echo "FAIL: ${python} is needed for the hand-built master" >&2
  exit 1
fi

finish() {
  echo "--- our clock (per-Sync lines left out)"
  grep -v ' delay ' "${work}/clock.log"
  echo "--- Delay_Req messages seen by the master, by length and the master's mode"
  awk '/^delay_req/ { print $2, $3 }' "${work}/peer.log" | uniq -c
  [ "${failures}" -eq 0 ]
  exit
}
# Stops the test at a step whose failure leaves nothing further to check.
require() {
  check "$@" || finish
}

clock_test_start 2
clock_log="${work}/clock.log"
peer_log="${work}/peer.log"
netns_run 2 50 "${python}" "${here}/legacy_peer.py" --address "$(netns_address 2)" \
  --identity 025a6dfffe6400fe --plain-flag "${work}/plain" --duration 40 \
  >"${peer_log}" 2>"${work}/peer.err" &
# Slave-only: while its link is down the clock waits in LISTENING instead of
# taking over as master.
netns_run 1 50 "${clock}" --interface "${NETNS_DEVICE}" --slave-only --automatic-recovery \
  "${CLOCK_FAST[@]}" --duration 38 >"${clock_log}" 2>&1 &

# 1. The master sets the bit: every Delay_Req is padded.
require "our clock follows the hand-built master" wait_for_line "${clock_log}" '-> SLAVE$' 10
require "our clock sends Delay_Req messages" \
  wait_for_line "${peer_log}" '^delay_req .*peer=legacy' 10 5
# The peer goes on logging: each comparison counts one snapshot of its log.
snapshot="${work}/peer_snapshot.log"
cp "${peer_log}" "${snapshot}"
check "they leave as 124 bytes" \
  test "$(count_lines "${snapshot}" '^delay_req length=124 peer=legacy')" -eq \
  "$(count_lines "${snapshot}" '^delay_req .*peer=legacy')"

# 2. The master no longer sets the bit: the padding stays until a close.
touch "${work}/plain"
require "Delay_Req messages go on after the bit is gone" \
  wait_for_line "${peer_log}" '^delay_req .*peer=plain' 10 5
check "they still leave as 124 bytes" \
  test "$(count_lines "${peer_log}" '^delay_req length=44 ')" -eq 0

# 3. Close and open: the link goes down (a send fails, the port goes FAULTY,
#    and the network is closed), the recovery reopens it, the link comes up.
netns_link 1 down
require "our clock goes FAULTY when its link is down" wait_for_line "${clock_log}" '-> FAULTY$' 10
netns_link 1 up
require "the recovery re-initialises the port" \
  wait_for_line "${clock_log}" 'FAULTY -> INITIALIZING$' 10
require "our clock follows the master again" wait_for_line "${clock_log}" '-> SLAVE$' 10 2
require "Delay_Req messages of 44 bytes follow" \
  wait_for_line "${peer_log}" '^delay_req length=44 peer=plain' 10 5
check "no padded Delay_Req after the first plain one" \
  test "$(awk '/^delay_req length=44/ { plain = 1 } plain && /^delay_req length=124/' \
    "${peer_log}" | grep -c .)" -eq 0
cp "${peer_log}" "${snapshot}"
check "Delay_Req of 124 bytes only while the padding was due" \
  test "$(count_lines "${snapshot}" '^delay_req length=(44|124) ')" -eq \
  "$(count_lines "${snapshot}" '^delay_req ')"
finish
