# shellcheck shell=bash
# For the tests and the benchmark that run zmptp_clock, and linuxptp's ptp4l,
# in the namespaces of netns.sh, which this file sources.
#
#   CLOCK_FAST                  zmptp_clock options for short intervals:
#                               Announce 4/s (a silent master is noticed after
#                               0.75 s), Sync and Delay_Req 8/s.
#   PTP4L_MASTER, PTP4L_SLAVE   ptp4l configuration lines for ptp4l_config: a
#                               master that wins over our clocks' defaults,
#                               and a slave-only clock.
#   wait_for_line <file> <regex> <seconds> [count]
#                               true as soon as the file holds <count> (1)
#                               lines that match the extended regex.
#   count_lines <file> <regex>  the number of matching lines.
#   clock_offset_errors <log> <expected ns>
#                               |offset - expected| of every per-Sync line of
#                               a zmptp_clock log, one a line, from the first
#                               line with a measured path delay on.
#   clock_delays <log>          the path delay of the same lines.
#   clock_kernel_stamped <log>  true when a zmptp_clock log ends with the
#                               kernel's stamp on every event message.
#   ptp4l_offset_errors <log> <expected ns>, ptp4l_delays <log>
#                               the same for the "master offset" lines that a
#                               ptp4l slave prints in its locked state (s2).
#   stats                       reads numbers, prints "count median p95" of
#                               them (nearest rank); "0 - -" for none.
#   mean                        reads numbers, prints their integer mean.
#   below <value> <bound>       true when the value is an integer below bound
#                               (false for the "-" of no value).
#   ptp4l_require               fails unless ptp4l is there and can be kept
#                               from steering the system clock.
#   ptp4l_config <file> <lines...>
#                               writes a ptp4l configuration with the short
#                               intervals, a management socket of its own, and
#                               the given lines.
#   ptp4l_run <i> <seconds> <config>
#                               runs ptp4l in namespace i, with software
#                               timestamps over UDP/IPv4 on the namespace's
#                               device, messages on stdout.
#   clock_scratch               makes the scratch directory ${work}, removed
#                               at exit.
#   clock_test_start <n>        for a test: clock_scratch, no failures
#                               counted yet (check of netns.sh), and n
#                               namespaces (exits 1 when they cannot be built).
#
# ptp4l never steers the machine's clock here: it runs without the capability
# to set time (CAP_SYS_TIME is taken out of its bounding set before it
# starts), so the kernel refuses every adjustment it tries, and a master is
# configured free-running as well. A slave uses the linreg servo, which
# reaches its locked state (and the port SLAVE) although its adjustments are
# refused; the free-running mode of this ptp4l never leaves UNCALIBRATED.

# shellcheck source-path=SCRIPTDIR source=netns.sh
source "$(dirname "${BASH_SOURCE[0]}")/netns.sh"

# shellcheck disable=SC2034 # used by the scripts that source this file
CLOCK_FAST=(--log-announce-interval -2 --log-sync-interval -3 --log-delay-req-interval -3)
# shellcheck disable=SC2034
PTP4L_MASTER=("priority1 10" "free_running 1")
# The slave's servo is refused every adjustment, so ptp4l's own check of the
# clock's frequency would call the steady offset a fault: it is off.
# shellcheck disable=SC2034
PTP4L_SLAVE=("slaveOnly 1" "clock_servo linreg" "first_step_threshold 0.0" "step_threshold 0.0"
  "sanity_freq_limit 0")

# The capability bit of CAP_SYS_TIME.
_CLOCK_CAP_SYS_TIME=25

wait_for_line() {
  local _file=$1 _pattern=$2 _count=${4:-1} _deadline
  _deadline=$((SECONDS + $3))
  while :; do
    if [ -f "${_file}" ] && [ "$(grep -cE -- "${_pattern}" "${_file}")" -ge "${_count}" ]; then
      return 0
    fi
    [ "${SECONDS}" -ge "${_deadline}" ] && return 1
    sleep 0.05
  done
}

count_lines() {
  local _n
  _n=$(grep -cE -- "$2" "$1" 2>/dev/null) || true
  echo "${_n:-0}"
}

_clock_sample_lines() {
  awk '$(NF-3) == "offset" && $(NF-1) == "delay" {
         if ($NF != 0) measured = 1
         if (measured) print $(NF-2), $NF
       }' "$1"
}

clock_offset_errors() {
  _clock_sample_lines "$1" | awk -v expected="$2" '{ e = $1 - expected; if (e < 0) e = -e; print e }'
}

clock_delays() {
  _clock_sample_lines "$1" | awk '{ print $2 }'
}

clock_kernel_stamped() {
  grep -qE '^timestamps kernel_receive=[1-9][0-9]* user_receive=0 kernel_transmit=[1-9][0-9]* user_transmit=0$' "$1"
}

_ptp4l_locked_lines() {
  awk '{ for (i = 1; i <= NF; i++) if ($i == "offset" && $(i-1) == "master" && $(i+2) == "s2") {
           print $(i+1), $NF; break } }' "$1"
}

ptp4l_offset_errors() {
  _ptp4l_locked_lines "$1" | awk -v expected="$2" '{ e = $1 - expected; if (e < 0) e = -e; print e }'
}

ptp4l_delays() {
  _ptp4l_locked_lines "$1" | awk '{ print $2 }'
}

stats() {
  sort -n | awk '{ v[NR] = $1 }
    END {
      if (NR == 0) { print 0, "-", "-"; exit }
      m = int((NR + 1) / 2); p = int(NR * 0.95); if (p < NR * 0.95) p++; if (p < 1) p = 1
      print NR, v[m], v[p]
    }'
}

mean() {
  awk '{ s += $1; n++ } END { if (n == 0) print "-"; else printf "%d\n", s / n }'
}

below() {
  [[ "$1" =~ ^-?[0-9]+$ ]] && [ "$1" -lt "$2" ]
}

ptp4l_require() {
  local capabilities
  if ! command -v ptp4l >/dev/null 2>&1 || ! command -v setpriv >/dev/null 2>&1; then
    echo "FAIL: ptp4l (linuxptp) and setpriv (util-linux) are needed; run scripts/setup" >&2
    exit 1
  fi
  # shellcheck disable=SC2016 # the $2 is awk's
  capabilities=$(setpriv --bounding-set=-sys_time --inh-caps=-sys_time -- \
    awk '/^CapEff:/ { print $2 }' /proc/self/status) || capabilities=""
  if [ -z "${capabilities}" ] ||
    (((16#${capabilities} >> _CLOCK_CAP_SYS_TIME) & 1)); then
    echo "FAIL: cannot take CAP_SYS_TIME from ptp4l; it must not run" >&2
    exit 1
  fi
}

ptp4l_config() {
  local _file=$1
  shift
  {
    echo "[global]"
    echo "uds_address ${_file%.cfg}.sock"
    echo "logAnnounceInterval -2"
    echo "logSyncInterval -3"
    echo "logMinDelayReqInterval -3"
    echo "summary_interval -3"
    printf '%s\n' "$@"
  } >"${_file}"
}

ptp4l_run() {
  netns_run "$1" "$2" setpriv --bounding-set=-sys_time --inh-caps=-sys_time -- \
    ptp4l -4 -S -i "${NETNS_DEVICE}" -m -q -f "$3"
}

clock_scratch() {
  work=$(mktemp -d)
  # shellcheck disable=SC2317 # called by the clean-up of netns.sh
  netns_on_exit() {
    rm -rf "${work}"
  }
}

clock_test_start() {
  clock_scratch
  failures=0
  netns_setup "$1" || {
    echo "FAIL: namespaces could not be built" >&2
    exit 1
  }
}
