#!/usr/bin/env bash
# Pairs of clocks over a veth pair between two network namespaces, each for
# the same time: ours with ours, ptp4l as master of ours, ours as master of
# ptp4l, and ptp4l with ptp4l. All read the same system clock, so the slave's
# offset is the error of the measurement. Prints one table: per pair the
# slave's samples, median and 95th percentile of |offset|, its mean path
# delay, the CPU time and peak RSS of each process, and, for our clocks, the
# send window (the time between the two clock readings around the send call
# of an event message) at the 50th and 99th percentiles.
#   netns_pairs.sh <zmptp_clock> [seconds per pair, default 20]
# Needs root (exit 77 otherwise) and linuxptp; CPU and RSS need GNU time.
# ptp4l never steers the clock here (see tests/netns/clock_common.sh).
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
netns_dir="${here}/../tests/netns"
clock=$1
seconds=${2:-20}
# shellcheck source-path=SCRIPTDIR source=../tests/netns/clock_common.sh
source "${netns_dir}/clock_common.sh"
netns_require_root
ptp4l_require

timer=/usr/bin/time
if ! [ -x "${timer}" ]; then
  echo "note: ${timer} (GNU time) is missing: no CPU and RSS figures" >&2
  timer=""
fi

clock_scratch

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
# One pair: <label> <master kind> <slave kind>, kinds "ours" or "ptp4l".
pair() {
  local label=$1 master_kind=$2 slave_kind=$3 tag
  tag=${label//[^a-z0-9]/_}
  netns_setup 2 || {
    echo "namespaces could not be built" >&2
    exit 1
  }
  # The master outlives the slave by a second, so the slave never sees it go.
  if [ "${master_kind}" = ours ]; then
    run_ours 1 $((seconds + 1)) "${tag}_master" --priority1 100 &
  else
    run_ptp4l 1 $((seconds + 1)) "${tag}_master" "${PTP4L_MASTER[@]}" &
  fi
  if [ "${slave_kind}" = ours ]; then
    run_ours 2 "${seconds}" "${tag}_slave" --priority1 200 &
  else
    run_ptp4l 2 "${seconds}" "${tag}_slave" "${PTP4L_SLAVE[@]}" &
  fi
  wait
  netns_cleanup

  local count median p95 delay
  if [ "${slave_kind}" = ours ]; then
    read -r count median p95 < <(clock_offset_errors "${work}/${tag}_slave.log" 0 | stats)
    delay=$(clock_delays "${work}/${tag}_slave.log" | mean)
  else
    read -r count median p95 < <(ptp4l_offset_errors "${work}/${tag}_slave.log" 0 | stats)
    delay=$(ptp4l_delays "${work}/${tag}_slave.log" | mean)
  fi
  local master_window="-" slave_window="-"
  [ "${master_kind}" = ours ] && master_window=$(window_of "${tag}_master")
  [ "${slave_kind}" = ours ] && slave_window=$(window_of "${tag}_slave")
  local master_cpu master_rss slave_cpu slave_rss
  read -r master_cpu master_rss < <(usage_of "${tag}_master")
  read -r slave_cpu slave_rss < <(usage_of "${tag}_slave")
  rows+=("$(printf '%-15s %7s %10s %10s %9s %6s %6s %6s %6s %13s %13s' "${label}" "${count}" \
    "${median}" "${p95}" "${delay}" "${master_cpu}" "${master_rss}" "${slave_cpu}" \
    "${slave_rss}" "${master_window}" "${slave_window}")")
  echo "${label}: done" >&2
}

echo "${seconds} s per pair; Sync and Delay_Req 8/s, Announce 4/s" >&2
pair "ours->ours" ours ours
pair "ptp4l->ours" ptp4l ours
pair "ours->ptp4l" ours ptp4l
pair "ptp4l->ptp4l" ptp4l ptp4l

echo
echo "Pairs over a veth pair, ${seconds} s each; offsets and delays of the slave in ns;"
echo "CPU in s and peak RSS in MiB per process; our send window p50/p99 in us."
printf '%-15s %7s %10s %10s %9s %6s %6s %6s %6s %13s %13s\n' "pair" "samples" \
  "|off| p50" "|off| p95" "delay" "M cpu" "M rss" "S cpu" "S rss" "M window" "S window"
printf '%s\n' "${rows[@]}"
