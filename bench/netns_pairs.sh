#!/usr/bin/env bash
# Pairs of clocks over a veth pair between two network namespaces, each for
# the same time: ours with ours, ptp4l as master of ours, ours as master of
# ptp4l, and ptp4l with ptp4l. All read the same system clock, so the slave's
# offset is the error of the measurement. Prints one table: per pair the
# slave's samples, median and 95th percentile of |offset|, its mean path
# delay, the CPU time and peak RSS of each process, and, for our clocks, the
# send window (the time between the two clock readings around the send call
# of an event message) at the 50th and 99th percentiles.
# Then the servo on the wire, for longer: ptp4l as master of ours steering a
# software clock (zmptp_clock --steer) that starts 20 ms ahead and 50 ppm
# fast. Its row in the table holds the offsets that it measures (from 20 ms
# on, and delays measured while its rate is far off); a second table its
# samples and time until synchronized and until |true error| < 10 us (each
# for good), and |true error| over the second half of the run, next to the
# measurement noise of the unsteered pairs of the same run.
#   netns_pairs.sh <zmptp_clock> [seconds per pair, default 20]
#                  [seconds of the servo run, default 90]
# Needs root (exit 77 otherwise) and linuxptp; CPU and RSS need GNU time.
# ptp4l never steers the clock here (see tests/netns/clock_common.sh).
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
netns_dir="${here}/../tests/netns"
clock=$1
seconds=${2:-20}
servo_seconds=${3:-90}
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
# One pair: <label> <master kind> <slave kind> [seconds], kinds "ours",
# "ptp4l" or, for a slave, "steered".
pair() {
  local label=$1 master_kind=$2 slave_kind=$3 seconds=${4:-${seconds}} tag
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
  elif [ "${slave_kind}" = steered ]; then
    # Slave-only, as in tests/netns/clock_servo_test.sh: never master first.
    run_ours 2 "${seconds}" "${tag}_slave" --slave-only --steer --clock-offset-ns 20000000 \
      --clock-ppm 50 &
  else
    run_ptp4l 2 "${seconds}" "${tag}_slave" "${PTP4L_SLAVE[@]}" &
  fi
  wait
  netns_cleanup

  local count median p95 delay
  if [ "${slave_kind}" != ptp4l ]; then
    read -r count median p95 < <(clock_offset_errors "${work}/${tag}_slave.log" 0 | stats)
    delay=$(clock_delays "${work}/${tag}_slave.log" | mean)
  else
    read -r count median p95 < <(ptp4l_offset_errors "${work}/${tag}_slave.log" 0 | stats)
    delay=$(ptp4l_delays "${work}/${tag}_slave.log" | mean)
  fi
  local master_window="-" slave_window="-"
  [ "${master_kind}" = ours ] && master_window=$(window_of "${tag}_master")
  [ "${slave_kind}" != ptp4l ] && slave_window=$(window_of "${tag}_slave")
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
pair "ptp4l->steered" ptp4l steered "${servo_seconds}"

echo
echo "Pairs over a veth pair, ${seconds} s each; offsets and delays of the slave in ns;"
echo "CPU in s and peak RSS in MiB per process; our send window p50/p99 in us."
printf '%-15s %7s %10s %10s %9s %6s %6s %6s %6s %13s %13s\n' "pair" "samples" \
  "|off| p50" "|off| p95" "delay" "M cpu" "M rss" "S cpu" "S rss" "M window" "S window"
printf '%s\n' "${rows[@]}"

# The servo's figures from the summary of the steered slave: "<n>/<s>" until
# synchronized and until within 10 us, then |true error| p50, p95 and max
# in us.
servo_row() {
  awk '/^servo_summary / {
         for (i = 2; i <= NF; i++) { split($i, kv, "="); v[kv[1]] = kv[2] }
         printf "%s/%s %s/%s %.1f %.1f %.1f\n", v["synchronized_after_samples"],
           v["synchronized_after_s"], v["within_10us_after_samples"], v["within_10us_after_s"],
           v["median_abs_error_ns"] / 1000, v["p95_abs_error_ns"] / 1000,
           v["max_abs_error_ns"] / 1000
         found = 1 }
       END { if (!found) print "- - - - -" }' "${work}/$1.log"
}
# |offset| p50/p95 of a pair's row, in us.
noise_of() {
  printf '%s\n' "${rows[@]}" | awk -v label="$1" '$1 == label {
    printf "%.1f/%.1f", $3 / 1000, $4 / 1000 }'
}
echo
echo "Servo on the wire: ptp4l master -> our slave steering a software clock that starts"
echo "20 ms ahead and 50 ppm fast, ${servo_seconds} s. Samples (from the first) / seconds (from"
echo "the start) until synchronized and until |true error| < 10 us, each for good (- never);"
echo "|true error| over the second half in us; the measurement noise is |offset| p50/p95 in us"
echo "of the unsteered pairs above."
printf '%-14s %-14s %8s %8s %8s %14s %14s\n' "to sync" "to <10us" "err p50" "err p95" \
  "err max" "ptp4l->ptp4l" "ptp4l->ours"
read -r to_sync to_10us error_p50 error_p95 error_max < <(servo_row ptp4l__steered_slave)
printf '%-14s %-14s %8s %8s %8s %14s %14s\n' "${to_sync}" "${to_10us}" "${error_p50}" \
  "${error_p95}" "${error_max}" "$(noise_of 'ptp4l->ptp4l')" "$(noise_of 'ptp4l->ours')"
