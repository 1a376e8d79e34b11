#!/usr/bin/env bash
# Pairs of clocks over a veth pair between two network namespaces, each for
# the same time: ours with ours (with the kernel's timestamps, then with
# readings in user space), ptp4l as master of ours, ours as master of ptp4l,
# ptp4l with ptp4l, ptpd as master of ours and ours as master of ptpd. All
# read the same system clock, so the slave's offset is the error of the
# measurement. Prints one table: per pair the slave's samples, median and 95th
# percentile of |offset|, its mean path delay and how many of its path delays
# were 0 (a negative one is stored as 0), the CPU time and peak RSS of each
# process, for our clocks the send window (the time between the two clock
# readings around the send call of an event message) at the 50th and 99th
# percentiles, and for our slave the age of its receive stamps (p50/p99: how
# long after the stamp the receiving thread had the datagram).
#   netns_pairs.sh <zmptp_clock> [seconds per pair, default 20]
# Needs root (exit 77 otherwise), linuxptp and ptpd; CPU and RSS need GNU
# time. Neither ptp4l nor ptpd ever steers the clock here (see
# tests/netns/clock_common.sh; ptpd runs the same way, and with -n).
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
netns_dir="${here}/../tests/netns"
clock=$1
seconds=${2:-20}
# shellcheck source-path=SCRIPTDIR source=../tests/netns/netns.sh
source "${netns_dir}/netns.sh"
# shellcheck source-path=SCRIPTDIR source=../tests/netns/clock_common.sh
source "${netns_dir}/clock_common.sh"
netns_require_root
ptp4l_require
if ! command -v ptpd >/dev/null 2>&1; then
  echo "FAIL: ptpd is needed; run scripts/setup" >&2
  exit 1
fi

timer=/usr/bin/time
if ! [ -x "${timer}" ]; then
  echo "note: ${timer} (GNU time) is missing: no CPU and RSS figures" >&2
  timer=""
fi

work=$(mktemp -d)
# shellcheck disable=SC2317 # called by the clean-up of netns.sh
netns_on_exit() {
  rm -rf "${work}"
}

# Runs a command in namespace <i> under GNU time, which writes
# "<user s> <system s> <peak RSS KiB>" as the last line of <file>.
measured() {
  local index=$1 limit=$2 file=$3
  shift 3
  if [ -n "${timer}" ]; then
    netns_run "${index}" "${limit}" "${timer}" -f '%U %S %M' -o "${file}" "$@"
  else
    netns_run "${index}" "${limit}" "$@"
  fi
}

# Our clock for <seconds>: <i> <seconds> <name> <options...>
run_ours() {
  local index=$1 duration=$2 name=$3
  shift 3
  measured "${index}" $((duration + 10)) "${work}/${name}.time" "${clock}" \
    --interface "${NETNS_DEVICE}" "${CLOCK_FAST[@]}" --report-send-window \
    --duration "${duration}" "$@" >"${work}/${name}.log" 2>&1
}

# ptp4l for <seconds>, ended by SIGINT: <i> <seconds> <name> <config lines...>
run_ptp4l() {
  local index=$1 duration=$2 name=$3
  shift 3
  ptp4l_config "${work}/${name}.cfg" "$@"
  measured "${index}" $((duration + 10)) "${work}/${name}.time" \
    setpriv --bounding-set=-sys_time --inh-caps=-sys_time -- \
    timeout -s INT "${duration}" ptp4l -4 -S -i "${NETNS_DEVICE}" -m -q \
    -f "${work}/${name}.cfg" >"${work}/${name}.log" 2>&1
}

# ptpd for <seconds>, ended by SIGINT: <i> <seconds> <name> master|slave.
# Its statistics file has a line per received message; the slave's Sync
# lines carry its offset and path delay, in seconds.
run_ptpd() {
  local index=$1 duration=$2 name=$3 role=$4
  local -a options=(-M --ptpengine:priority1=10)
  [ "${role}" = slave ] && options=(-s)
  measured "${index}" $((duration + 10)) "${work}/${name}.time" \
    setpriv --bounding-set=-sys_time --inh-caps=-sys_time -- \
    timeout -s INT "${duration}" ptpd -C -L -n -i "${NETNS_DEVICE}" "${options[@]}" \
    --ptpengine:log_announce_interval=-2 --ptpengine:log_sync_interval=-3 \
    --ptpengine:log_delayreq_interval=-3 --ptpengine:log_delayreq_interval_initial=-3 \
    --global:lock_directory="${work}" -S "${work}/${name}.stats" \
    >"${work}/${name}.log" 2>&1
}

# "<offset ns> <delay ns>" of each Sync of a ptpd slave, from the first one
# with a measured path delay on.
ptpd_samples() {
  awk -F', *' '$2 == "slv" && $9 == "S" {
                 if ($4 != 0) measured = 1
                 if (measured) printf "%.0f %.0f\n", $5 * 1e9, $4 * 1e9 }' "${work}/$1.stats"
}

# "<p50>/<p99>" of our slave's receive stamp age, in microseconds, or "-".
age_of() {
  awk '/^stamp_age / {
         for (i = 2; i <= NF; i++) { split($i, kv, "="); v[kv[1]] = kv[2] }
         printf "%.1f/%.1f", v["receive_p50_ns"] / 1000, v["receive_p99_ns"] / 1000
         found = 1 }
       END { if (!found) printf "-" }' "${work}/$1.log"
}

# "<cpu s> <RSS MiB>" of a run, or "- -".
usage_of() {
  local file="${work}/$1.time"
  if [ -s "${file}" ]; then
    tail -n 1 "${file}" | awk '{ printf "%.2f %.1f\n", $1 + $2, $3 / 1024 }'
  else
    echo "- -"
  fi
}

# "<p50>/<p99>" of our send window, in microseconds, or "-".
window_of() {
  awk '/^send_window / {
         for (i = 2; i <= NF; i++) { split($i, kv, "="); v[kv[1]] = kv[2] }
         if (v["samples"] > 0) printf "%.1f/%.1f", v["p50_ns"] / 1000, v["p99_ns"] / 1000
         else printf "-"
         found = 1 }
       END { if (!found) printf "-" }' "${work}/$1.log"
}

rows=()
# One pair: <label> <master kind> <slave kind>, kinds "ours" (the kernel's
# timestamps), "ours-user" (readings in user space), "ptp4l" or "ptpd".
pair() {
  local label=$1 master_kind=$2 slave_kind=$3 tag
  tag=${label//[^a-z0-9]/_}
  netns_setup 2 || {
    echo "namespaces could not be built" >&2
    exit 1
  }
  # The master outlives the slave by a second, so the slave never sees it go.
  local -a timestamps=(--timestamps kernel)
  case "${master_kind}" in
    ours | ours-user)
      [ "${master_kind}" = ours-user ] && timestamps=(--timestamps user)
      run_ours 1 $((seconds + 1)) "${tag}_master" --priority1 100 "${timestamps[@]}" &
      ;;
    ptpd) run_ptpd 1 $((seconds + 1)) "${tag}_master" master & ;;
    *) run_ptp4l 1 $((seconds + 1)) "${tag}_master" "priority1 10" "free_running 1" & ;;
  esac
  case "${slave_kind}" in
    ours | ours-user)
      [ "${slave_kind}" = ours-user ] && timestamps=(--timestamps user)
      run_ours 2 "${seconds}" "${tag}_slave" --priority1 200 "${timestamps[@]}" &
      ;;
    ptpd) run_ptpd 2 "${seconds}" "${tag}_slave" slave & ;;
    *)
      run_ptp4l 2 "${seconds}" "${tag}_slave" "slaveOnly 1" "clock_servo linreg" \
        "first_step_threshold 0.0" "step_threshold 0.0" "sanity_freq_limit 0" &
      ;;
  esac
  wait
  netns_cleanup

  local log="${work}/${tag}_slave.log" errors="${work}/${tag}.errors" delays="${work}/${tag}.delays"
  case "${slave_kind}" in
    ours*) clock_offset_errors "${log}" 0 >"${errors}" && clock_delays "${log}" >"${delays}" ;;
    ptpd)
      ptpd_samples "${tag}_slave" | awk '{ print ($1 < 0 ? -$1 : $1) }' >"${errors}"
      ptpd_samples "${tag}_slave" | awk '{ print $2 }' >"${delays}"
      ;;
    *) ptp4l_offset_errors "${log}" 0 >"${errors}" && ptp4l_delays "${log}" >"${delays}" ;;
  esac
  local count median p95 delay zeros
  read -r count median p95 < <(stats <"${errors}")
  delay=$(mean <"${delays}")
  zeros=$(grep -cx 0 "${delays}")
  local master_window="-" slave_window="-" slave_age="-"
  [[ "${master_kind}" == ours* ]] && master_window=$(window_of "${tag}_master")
  if [[ "${slave_kind}" == ours* ]]; then
    slave_window=$(window_of "${tag}_slave")
    slave_age=$(age_of "${tag}_slave")
  fi
  local master_cpu master_rss slave_cpu slave_rss
  read -r master_cpu master_rss < <(usage_of "${tag}_master")
  read -r slave_cpu slave_rss < <(usage_of "${tag}_slave")
  rows+=("$(printf '%-15s %7s %9s %9s %8s %5s %6s %6s %6s %6s %12s %12s %12s' "${label}" \
    "${count}" "${median}" "${p95}" "${delay}" "${zeros}" "${master_cpu}" "${master_rss}" \
    "${slave_cpu}" "${slave_rss}" "${master_window}" "${slave_window}" "${slave_age}")")
  echo "${label}: done" >&2
}

echo "${seconds} s per pair; Sync and Delay_Req 8/s, Announce 4/s" >&2
pair "ours->ours" ours ours
pair "ours->ours user" ours-user ours-user
pair "ptp4l->ours" ptp4l ours
pair "ours->ptp4l" ours ptp4l
pair "ptp4l->ptp4l" ptp4l ptp4l
pair "ptpd->ours" ptpd ours
pair "ours->ptpd" ours ptpd

echo
echo "Pairs over a veth pair, ${seconds} s each; offsets and delays of the slave in ns,"
echo "d=0 the slave's path delays of 0; CPU in s and peak RSS in MiB per process;"
echo "our send window and slave receive stamp age p50/p99 in us."
printf '%-15s %7s %9s %9s %8s %5s %6s %6s %6s %6s %12s %12s %12s\n' "pair" "samples" \
  "|off| p50" "|off| p95" "delay" "d=0" "M cpu" "M rss" "S cpu" "S rss" "M window" \
  "S window" "S rx age"
printf '%s\n' "${rows[@]}"
