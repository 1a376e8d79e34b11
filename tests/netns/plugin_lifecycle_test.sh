#!/usr/bin/env bash
# The time source with the PTP plug-in (zmptp_plugin_host) on a bridge beside
# a ptp4l master, steering a software time reference that starts 1 s off:
#  1. it comes online, its port settles as SLAVE, the servo reaches its
#     synchronized flag, and the reference's error from the system clock (the
#     master's time) settles within a bound;
#  2. pmc's SET PRIORITY1 over the wire reaches the source's file;
#  3. <cycles> times the device goes away, in turns deleted (the rebuilds then
#     fail with code 257 until it is back) and taken down: the port goes
#     FAULTY, the plug-in is destroyed, and a new one comes no sooner than
#     2000 ms later, on its own once the device is back, with the changed
#     priority1 in force, and follows the master again; after the last, the
#     servo brings the error back within the bound;
#  4. the threads, descriptors and heap of the process are the same after the
#     last cycle as after the first, and only the main thread is left at the end.
#   plugin_lifecycle_test.sh <zmptp_plugin_host> [cycles]
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
host=$1
cycles=${2:-20}
# shellcheck source-path=SCRIPTDIR source=clock_common.sh
source "${here}/clock_common.sh"
# shellcheck source-path=SCRIPTDIR source=plugin_common.sh
source "${here}/plugin_common.sh"
netns_require_root
ptp4l_require

# The servo's synchronisation threshold is 1 ms; software timestamps on a
# veth leave tens of microseconds.
max_error_ns=500000
# The heap may differ by what one cycle leaves in flight (a trace line, a
# queued packet), never by a cycle's worth of objects times the cycles.
max_heap_growth=16384

clock_scratch
failures=0
# The command channel to the host program closes with the scratch directory.
# shellcheck disable=SC2317 # called by the clean-up of netns.sh
netns_on_exit() {
  exec 3>&- 2>/dev/null
  rm -rf "${work}"
}
# The error's last 5 readings since the servo's flag was last set lie within
# the bound: after a rebuild the servo starts afresh, and a reference that ran
# unsteered through faults comes back within some seconds.
# shellcheck disable=SC2317 # called through plugin_wait
settled() {
  local count largest
  read -r count largest < <(plugin_errors_after "${log}" '^[0-9]+ synchronized$' 5)
  [ "${count}" -eq 5 ] && below "${largest}" "${max_error_ns}"
}
check_settled() {
  local count largest
  check "$1 settles within ${max_error_ns} ns of the master's time" plugin_wait 60 settled
  read -r count largest < <(plugin_errors_after "${log}" '^[0-9]+ synchronized$')
  echo "$1: ${count} readings of the error since synchronized, largest ${largest} ns"
}
finish() {
  echo "--- zmptp_plugin_host (error lines left out)"
  grep -vE '^[0-9]+ error ' "${log}"
  [ "${failures}" -eq 0 ]
  exit
}
require() {
  check "$@" || finish
}

netns_setup 3 || {
  echo "FAIL: namespaces could not be built" >&2
  exit 1
}
seconds=$((cycles * 8 + 90))
ptp4l_config "${work}/master.cfg" "priority1 10" "free_running 1"
ptp4l_run 1 "${seconds}" "${work}/master.cfg" >"${work}/master.log" 2>&1 &
plugin_start "${work}" "${host}" 2 "${seconds}" "PriorityOne = 200" || {
  echo "FAIL: the host program could not be started" >&2
  exit 1
}
log=${plugin_log}

# 1. Online, SLAVE, synchronized, and the error bounded from then on.
require "the source comes online" wait_for_line "${log}" '^[0-9]+ online$' 10
require "its port settles as SLAVE" wait_for_line "${log}" '^[0-9]+ state SLAVE$' 20
require "the servo synchronizes the reference" wait_for_line "${log}" '^[0-9]+ synchronized$' 30
check_settled "the reference"

# 2. Management's change reaches the file: pmc in namespace 3 asks our clock
# alone (ptp4l answers requests to all clocks too).
mac=$(netns_mac 2)
target=${mac:0:2}${mac:3:2}${mac:6:2}.fffe.${mac:9:2}${mac:12:2}${mac:15:2}-1
pmc_ask() {
  netns_run 3 10 pmc -4 -i "${NETNS_DEVICE}" -b 0 "TARGET ${target}" "$@" 2>&1 |
    grep -v '^sending: '
}
# shellcheck disable=SC2317 # called through require and check
pmc_reads_priority1() {
  pmc_ask "GET PRIORITY1" | grep -qE "^[[:space:]]+priority1[[:space:]]+$1[[:space:]]*\$"
}
pmc_ask "SET PRIORITY1 150" >/dev/null
require "pmc's SET PRIORITY1 150 is in force" pmc_reads_priority1 150
check "the change is in the file" wait_for_line "${plugin_file}" '^source\.ptp\.PriorityOne = 150' 5

# 3. The device goes away and comes back.
# Waits for one more host line of the kind than there were before.
next_line() {
  local what=$1 pattern=$2 seconds=$3 before=$4
  require "cycle ${cycle}: ${what}" wait_for_line "${log}" "${pattern}" "${seconds}" $((before + 1))
}
offline='^[0-9]+ offline$'
online='^[0-9]+ online( code [0-9]+)?$'
slave='^[0-9]+ state SLAVE$'
for ((cycle = 1; cycle <= cycles; cycle++)); do
  offlines=$(count_lines "${log}" "${offline}")
  onlines=$(count_lines "${log}" "${online}")
  slaves=$(count_lines "${log}" "${slave}")
  shows=$(count_lines "${log}" '^[0-9]+ show ')
  if ((cycle % 2)); then
    failures_257=$(count_lines "${log}" 'error code 257,')
    netns_unplug 2
    next_line "the port goes FAULTY and the plug-in goes" "${offline}" 5 "${offlines}"
    next_line "a rebuild without the device fails with code 257" 'error code 257,' 5 \
      "${failures_257}"
    netns_replug 2
  else
    netns_link 2 down
    next_line "the port goes FAULTY and the plug-in goes" "${offline}" 5 "${offlines}"
    netns_link 2 up
  fi
  next_line "a new plug-in comes online" "${online}" 10 "${onlines}"
  next_line "it follows the master again" "${slave}" 10 "${slaves}"
  plugin_command show
  next_line "priority1 150 is in force" '^[0-9]+ show priority1=150 ' 5 "${shows}"
  plugin_command resources
done
shortest=$(plugin_gaps "${log}" "${offline}" "${online}" | sort -n | head -1)
echo "offline to online: shortest ${shortest} ms"
check "no plug-in came back sooner than 2000 ms" test "${shortest:-0}" -ge 2000
# The servo's flag as it was last reported, and not before the last plug-in.
# shellcheck disable=SC2317 # called through plugin_wait
synchronized_again() {
  [ "$(grep -E '^[0-9]+ (online|synchronized|unsynchronized)' "${log}" | tail -1 |
    cut -d ' ' -f 2)" = synchronized ]
}
require "the last plug-in synchronizes the reference again" plugin_wait 30 synchronized_again
check_settled "after the last cycle, the reference"
check "pmc reads priority1 150 from the last plug-in" pmc_reads_priority1 150

# 4. Nothing leaks.
first=$(grep -E '^[0-9]+ resources ' "${log}" | head -1)
last=$(grep -E '^[0-9]+ resources ' "${log}" | tail -1)
echo "after cycle 1: ${first#* resources }"
echo "after cycle ${cycles}: ${last#* resources }"
check "threads after the last cycle as after the first" \
  test "$(plugin_field "${last}" threads)" -eq "$(plugin_field "${first}" threads)"
check "descriptors after the last cycle as after the first" \
  test "$(plugin_field "${last}" fds)" -eq "$(plugin_field "${first}" fds)"
check "heap after the last cycle within ${max_heap_growth} bytes of the first" \
  test $(($(plugin_field "${last}" heap) - $(plugin_field "${first}" heap))) -le "${max_heap_growth}"
plugin_stop
check "only the main thread is left at the end" \
  wait_for_line "${log}" '^[0-9]+ resources threads=1 ' 10
finish
