#!/usr/bin/env bash
# The time source with the PTP plug-in (zmptp_plugin_host) as a slave, beside
# a ptp4l slave of the same ptp4l master on one bridge:
#  - CPU time and RSS of both slave processes over <seconds> of following;
#  - the time from the device's return to SLAVE again, after the device was
#    deleted (the rebuild waits for its next 2000 ms retry) and after its link
#    was down (the rebuild comes 2000 ms after the fault), <cycles> times each.
#   plugin_netns_bench.sh <zmptp_plugin_host> [seconds, default 60] [cycles, default 5]
# Needs root (exit 77 otherwise) and linuxptp. ptp4l never steers the clock
# here (see tests/netns/clock_common.sh).
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
netns_dir="${here}/../tests/netns"
host=$1
seconds=${2:-60}
cycles=${3:-5}
# shellcheck source-path=SCRIPTDIR source=../tests/netns/netns.sh
source "${netns_dir}/netns.sh"
# shellcheck source-path=SCRIPTDIR source=../tests/netns/clock_common.sh
source "${netns_dir}/clock_common.sh"
# shellcheck source-path=SCRIPTDIR source=../tests/netns/plugin_common.sh
source "${netns_dir}/plugin_common.sh"
netns_require_root
ptp4l_require

work=$(mktemp -d)
# shellcheck disable=SC2317 # called by the clean-up of netns.sh
netns_on_exit() {
  exec 3>&- 2>/dev/null
  rm -rf "${work}"
}
fail() {
  echo "FAIL: $1" >&2
  grep -vE '^[0-9]+ error ' "${plugin_log}" >&2
  exit 1
}

# The process of namespace <i> whose name begins with <name>.
pid_of() {
  local pid
  for pid in $(ip netns pids "$(netns_name "$1")"); do
    if [[ "$(cat "/proc/${pid}/comm" 2>/dev/null)" == "$2"* ]]; then
      echo "${pid}"
      return 0
    fi
  done
  return 1
}
# User and system time of a process, in clock ticks.
cpu_ticks() {
  awk '{ sub(/^.*\) /, ""); print $12 + $13 }' "/proc/$1/stat"
}
rss_kb() {
  awk '/^VmRSS:/ { print $2 }' "/proc/$1/status"
}

limit=$((seconds + cycles * 20 + 60))
netns_setup 3 || fail "namespaces could not be built"
ptp4l_config "${work}/master.cfg" "priority1 10" "free_running 1"
ptp4l_run 1 "${limit}" "${work}/master.cfg" >"${work}/master.log" 2>&1 &
ptp4l_config "${work}/slave.cfg" "slaveOnly 1" "clock_servo linreg" \
  "first_step_threshold 0.0" "step_threshold 0.0" "sanity_freq_limit 0"
ptp4l_run 3 "${limit}" "${work}/slave.cfg" >"${work}/slave.log" 2>&1 &
plugin_start "${work}" "${host}" 2 "${limit}" || fail "the host program could not be started"

wait_for_line "${plugin_log}" '^[0-9]+ synchronized$' 30 || fail "ours did not synchronize"
wait_for_line "${work}/slave.log" 'to SLAVE on' 30 || fail "ptp4l did not follow"
ours=$(pid_of 2 zmptp_plugin) || fail "our process is gone"
theirs=$(pid_of 3 ptp4l) || fail "ptp4l is gone"
# The host program looks at the port state once a second while it is measured.
plugin_command "poll 1000"
ours_start=$(cpu_ticks "${ours}")
theirs_start=$(cpu_ticks "${theirs}")
sleep "${seconds}"
ours_cpu=$(($(cpu_ticks "${ours}") - ours_start))
theirs_cpu=$(($(cpu_ticks "${theirs}") - theirs_start))
tick=$(getconf CLK_TCK)
read -r count largest < <(plugin_errors_after "${plugin_log}" '^[0-9]+ synchronized$')
echo "following for ${seconds} s as slave (CPU % of one core, RSS):"
awk -v t="${tick}" -v s="${seconds}" -v a="${ours_cpu}" -v b="${theirs_cpu}" \
  -v ra="$(rss_kb "${ours}")" -v rb="$(rss_kb "${theirs}")" 'BEGIN {
    printf "  ours   %.3f %%  %d kB\n", 100 * a / t / s, ra
    printf "  ptp4l  %.3f %%  %d kB\n", 100 * b / t / s, rb }'
echo "  our reference's error from the master's time: ${count} readings, largest ${largest} ns"

# From the device's return (mark) to SLAVE again, seen within 10 ms.
plugin_command "poll 10"
slave='^[0-9]+ state SLAVE$'
for kind in deleted down; do
  for ((cycle = 1; cycle <= cycles; cycle++)); do
    offlines=$(count_lines "${plugin_log}" '^[0-9]+ offline$')
    slaves=$(count_lines "${plugin_log}" "${slave}")
    if [ "${kind}" = deleted ]; then
      failed=$(count_lines "${plugin_log}" 'error code 257,')
      netns_unplug 2
      wait_for_line "${plugin_log}" 'error code 257,' 10 $((failed + 1)) || fail "no retry"
      netns_replug 2
    else
      netns_link 2 down
      wait_for_line "${plugin_log}" '^[0-9]+ offline$' 10 $((offlines + 1)) || fail "no fault"
      netns_link 2 up
    fi
    plugin_command mark
    wait_for_line "${plugin_log}" "${slave}" 15 $((slaves + 1)) || fail "not SLAVE again"
  done
  # The marks of this kind: the last <cycles> of the log.
  plugin_gaps "${plugin_log}" '^[0-9]+ mark$' "${slave}" | tail -n "${cycles}" | stats |
    awk -v k="${kind}" '{ printf "device %s, back to SLAVE: %d cycles, median %s ms, p95 %s ms\n", k, $1, $2, $3 }'
done
plugin_stop
