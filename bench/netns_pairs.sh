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
# Then the servo on the wire, for longer: ptp4l as master of ours steering a
# software clock (zmptp_clock --steer) that starts 20 ms ahead and 50 ppm
# fast. Its row in the table holds the offsets that it measures (from 20 ms
# on, and delays measured while its rate is far off); a second table its
# samples and time until synchronized and until |true error| < 10 us (each
# for good), and |true error| over the second half of the run, next to the
# measurement noise of the unsteered pairs of the same run.
#                  [seconds of the servo run, default 90]
# Last, ours<->ours and ptp4l<->ptp4l again, in turn, for more rounds: the
# medians of one pair move from run to run by more than the two pairs differ,
# so one round alone cannot rank them; a line gives each one's medians.
#                  [rounds of the two, default 3]
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
netns_dir="${here}/../tests/netns"
clock=$1
seconds=${2:-20}
servo_seconds=${3:-90}
rounds=${4:-3}
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

# "<p50>/<p95>" of our slave's |offset| had each offset used the median of
# the last 10 path delays (as ptp4l's delay filter does) instead of the last
# one alone, in ns: what the unfiltered path delay adds to the error.
filtered_of() {
  awk '{ d[(NR - 1) % 10] = $2; n = NR < 10 ? NR : 10
      for (i = 0; i < n; i++) w[i] = d[i]
      for (i = 1; i < n; i++) for (j = i; j > 0 && w[j - 1] > w[j]; j--) {
        t = w[j]; w[j] = w[j - 1]; w[j - 1] = t }
      m = n % 2 ? w[(n - 1) / 2] : (w[n / 2 - 1] + w[n / 2]) / 2
      e = $1 + $2 - m; printf "%.0f\n", e < 0 ? -e : e }' "$1" | stats |
    awk '$1 > 0 { printf "%s/%s", $2, $3; next } { printf "-" }'
}

rows=()
# One pair: <label> <master kind> <slave kind> [seconds], kinds "ours" (the
# kernel's timestamps), "ours-user" (readings in user space), "ptp4l", "ptpd"
# or, for a slave, "steered".
pair() {
  local label=$1 master_kind=$2 slave_kind=$3 seconds=${4:-${seconds}} tag
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
    *) run_ptp4l 1 $((seconds + 1)) "${tag}_master" "${PTP4L_MASTER[@]}" & ;;
  esac
  case "${slave_kind}" in
    ours | ours-user)
      [ "${slave_kind}" = ours-user ] && timestamps=(--timestamps user)
      run_ours 2 "${seconds}" "${tag}_slave" --priority1 200 "${timestamps[@]}" &
      ;;
    steered)
      # Slave-only, as in tests/netns/clock_servo_test.sh: never master first.
      run_ours 2 "${seconds}" "${tag}_slave" --slave-only --steer --clock-offset-ns 20000000 \
        --clock-ppm 50 "${timestamps[@]}" &
      ;;
    ptpd) run_ptpd 2 "${seconds}" "${tag}_slave" slave & ;;
    *) run_ptp4l 2 "${seconds}" "${tag}_slave" "${PTP4L_SLAVE[@]}" & ;;
  esac
  wait
  netns_cleanup

  # "<offset ns> <delay ns>" of each of the slave's samples.
  local samples="${work}/${tag}.samples"
  case "${slave_kind}" in
    ours* | steered) _clock_sample_lines "${work}/${tag}_slave.log" ;;
    ptpd) ptpd_samples "${tag}_slave" ;;
    *) _ptp4l_locked_lines "${work}/${tag}_slave.log" ;;
  esac >"${samples}"
  local count median p95 bias delay zeros
  read -r count median p95 < <(awk '{ print ($1 < 0 ? -$1 : $1) }' "${samples}" | stats)
  bias=$(awk '{ print $1 }' "${samples}" | mean)
  delay=$(awk '{ print $2 }' "${samples}" | mean)
  zeros=$(awk '$2 == 0' "${samples}" | wc -l)
  local master_window="-" slave_window="-" slave_age="-" filtered="-"
  [[ "${master_kind}" == ours* ]] && master_window=$(window_of "${tag}_master")
  if [[ "${slave_kind}" == ours* || "${slave_kind}" == steered ]]; then
    slave_window=$(window_of "${tag}_slave")
    slave_age=$(age_of "${tag}_slave")
    filtered=$(filtered_of "${samples}")
  fi
  local master_cpu master_rss slave_cpu slave_rss
  read -r master_cpu master_rss < <(usage_of "${tag}_master")
  read -r slave_cpu slave_rss < <(usage_of "${tag}_slave")
  rows+=("$(printf '%-15s %7s %9s %9s %11s %6s %8s %5s %6s %6s %6s %6s %12s %12s %12s' \
    "${label}" "${count}" "${median}" "${p95}" "${filtered}" "${bias}" "${delay}" "${zeros}" \
    "${master_cpu}" "${master_rss}" "${slave_cpu}" "${slave_rss}" "${master_window}" \
    "${slave_window}" "${slave_age}")")
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
pair "ptp4l->steered" ptp4l steered "${servo_seconds}"
for ((round = 2; round <= rounds; round++)); do
  pair "ours->ours#${round}" ours ours
  pair "ptp4l->ptp4l#${round}" ptp4l ptp4l
done

echo
echo "Pairs over a veth pair, ${seconds} s each; offsets and delays of the slave in ns,"
echo "d=0 the slave's path delays of 0; CPU in s and peak RSS in MiB per process;"
echo "our send window and slave receive stamp age p50/p99 in us; for our slaves also"
echo "|off| p50/p95 had each offset used the median of the last 10 path delays (filt);"
echo "bias: the mean of the signed offsets, the asymmetry of the two directions."
printf '%-15s %7s %9s %9s %11s %6s %8s %5s %6s %6s %6s %6s %12s %12s %12s\n' "pair" \
  "samples" "|off| p50" "|off| p95" "filt p50/95" "bias" "delay" "d=0" "M cpu" "M rss" \
  "S cpu" "S rss" "M window" "S window" "S rx age"
printf '%s\n' "${rows[@]}"
# "<median of medians> (<lowest>-<highest>)" of a pair's rounds, and of their
# 95th percentiles.
rounds_of() {
  printf '%s\n' "${rows[@]}" | awk -v label="$1" '{ sub(/#[0-9]+$/, "", $1) }
    $1 == label && $2 ~ /^[0-9]+$/ && $3 != "-" { m[++n] = $3; p[n] = $4 }
    function middle(v, k, i, j, t) {
      for (i = 2; i <= k; i++) for (j = i; j > 1 && v[j - 1] > v[j]; j--) {
        t = v[j]; v[j] = v[j - 1]; v[j - 1] = t }
      return sprintf("%s (%s-%s)", v[int((k + 1) / 2)], v[1], v[k]) }
    END { if (n == 0) { print "-"; exit }
          printf "p50 %s, p95 %s over %d rounds", middle(m, n), middle(p, n), n }'
}
echo "ours->ours   |off| $(rounds_of 'ours->ours')"
echo "ptp4l->ptp4l |off| $(rounds_of 'ptp4l->ptp4l')"

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
