#!/usr/bin/env bash
# Network failures and automatic recovery, with three of our clocks on a
# bridge: a master, and two slave-only clocks B (automatic recovery on) and C
# (off).
#  1. The links of B and C go down: the next send fails, the failure comes
#     to the port as a network error, and both go FAULTY. The links come up:
#     B re-initialises through its recovery timer and follows the master
#     again; C stays FAULTY, as nothing clears its fault.
#  2. B's device loses its address: B goes FAULTY again, and the recovery,
#     retried every 500 ms, cannot open the network, so B stays FAULTY. The
#     address comes back: the next retry opens the network, and B follows the
#     master again.
# Slave-only clocks wait in LISTENING while they hear no master, so the only
# sends that fail are their Delay_Req messages.
#   clock_recovery_test.sh <zmptp_clock>
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
clock=$1
# shellcheck source-path=SCRIPTDIR source=clock_common.sh
source "${here}/clock_common.sh"
netns_require_root

finish() {
  local name
  for name in master b c; do
    echo "--- clock ${name} (per-Sync lines left out)"
    grep -v ' delay ' "${work}/${name}.log"
  done
  [ "${failures}" -eq 0 ]
  exit
}
require() {
  check "$@" || finish
}

clock_test_start 3
master_log="${work}/master.log"
b_log="${work}/b.log"
c_log="${work}/c.log"
netns_run 1 40 "${clock}" --interface "${NETNS_DEVICE}" --priority1 100 "${CLOCK_FAST[@]}" \
  --duration 30 >"${master_log}" 2>&1 &
netns_run 2 40 "${clock}" --interface "${NETNS_DEVICE}" --slave-only --automatic-recovery \
  "${CLOCK_FAST[@]}" --duration 30 >"${b_log}" 2>&1 &
netns_run 3 40 "${clock}" --interface "${NETNS_DEVICE}" --slave-only "${CLOCK_FAST[@]}" \
  --duration 30 >"${c_log}" 2>&1 &

require "B follows the master" wait_for_line "${b_log}" '-> SLAVE$' 10
require "C follows the master" wait_for_line "${c_log}" '-> SLAVE$' 10

# 1. Link down and up.
netns_link 2 down
netns_link 3 down
require "B goes FAULTY when its link is down" wait_for_line "${b_log}" 'SLAVE -> FAULTY$' 5
require "C goes FAULTY when its link is down" wait_for_line "${c_log}" 'SLAVE -> FAULTY$' 5
netns_link 2 up
netns_link 3 up
require "B's recovery re-initialises the port" \
  wait_for_line "${b_log}" 'FAULTY -> INITIALIZING$' 5
require "B follows the master again" wait_for_line "${b_log}" '-> SLAVE$' 10 2
require "B measures again" wait_for_line "${b_log}" '^offset ' 5 \
  $(($(count_lines "${b_log}" '^offset ') + 5))
sleep 2
check "C, without automatic recovery, is still FAULTY" \
  test "$(count_lines "${c_log}" '^state FAULTY -> ')" -eq 0

# 2. No address: the recovery retries until it can open the network.
netns_ip 2 addr flush dev "${NETNS_DEVICE}"
require "B goes FAULTY when its device loses its address" \
  wait_for_line "${b_log}" 'SLAVE -> FAULTY$' 5 2
sleep 1.6
check "B stays FAULTY while the network cannot be opened (three retries)" \
  test "$(count_lines "${b_log}" 'FAULTY -> INITIALIZING$')" -eq 1
netns_ip 2 addr add "$(netns_address 2)/16" dev "${NETNS_DEVICE}"
require "a retry re-initialises the port once the address is back" \
  wait_for_line "${b_log}" 'FAULTY -> INITIALIZING$' 2 2
require "B follows the master again" wait_for_line "${b_log}" '-> SLAVE$' 10 3
check "the master stayed MASTER throughout" \
  test "$(count_lines "${master_log}" '^state MASTER -> ')" -eq 0
finish
