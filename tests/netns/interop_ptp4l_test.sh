#!/usr/bin/env bash
# Our clock against linuxptp's ptp4l (software timestamps, UDP/IPv4), over a
# veth pair. Both read the system clock; the master reads it 37 ms behind
# (ours through --clock-offset-ns; ptp4l cannot, so in the mode where ptp4l
# is master ours reads 37 ms ahead instead), so the slave must measure an
# offset of +37 ms, and what is left over is the measurement's error.
#   interop_ptp4l_test.sh <zmptp_clock> ptp4l-master
#       ptp4l (priority1 10, free-running) is master; ours must reach SLAVE.
#   interop_ptp4l_test.sh <zmptp_clock> ptp4l-slave
#       ours (priority1 100) is master; ptp4l (slaveOnly) must reach SLAVE.
# ptp4l runs without the capability to set the clock (clock_common.sh). Ours
# takes the kernel's timestamps, as ptp4l does.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
clock=$1
mode=$2
# shellcheck source-path=SCRIPTDIR source=clock_common.sh
source "${here}/clock_common.sh"
netns_require_root
ptp4l_require

offset_ns=37000000
# The kernel's stamps on both sides: the error is 0.3-0.7 us (p95 1.5 us); a
# stamp of the wrong message or in the wrong clock is off by far more.
max_median_error_ns=5000
ours_timestamps=(--timestamps kernel)
min_samples=20
seconds=10

clock_test_start 2
ours="${work}/ours.log"
theirs="${work}/ptp4l.log"
config="${work}/ptp4l.cfg"
case "${mode}" in
  ptp4l-master)
    ptp4l_config "${config}" "${PTP4L_MASTER[@]}"
    # The master outlives the slave, which must not see it go.
    ptp4l_run 1 $((seconds + 2)) "${config}" >"${theirs}" 2>&1 &
    netns_run 2 $((seconds + 10)) "${clock}" --interface "${NETNS_DEVICE}" "${CLOCK_FAST[@]}" \
      "${ours_timestamps[@]}" --clock-offset-ns "${offset_ns}" --duration "${seconds}" \
      >"${ours}" 2>&1 &
    wait
    echo "--- ptp4l"
    cat "${theirs}"
    echo "--- ours (per-Sync lines left out)"
    grep -v '^offset ' "${ours}"
    read -r count median p95 < <(clock_offset_errors "${ours}" "${offset_ns}" | stats)
    delay=$(clock_delays "${ours}" | mean)
    echo "ours: ${count} samples, |offset - 37 ms| median ${median} ns, p95 ${p95} ns;" \
      "mean path delay ${delay} ns"
    check "ptp4l took the master's role" grep -q 'assuming the grand master role' "${theirs}"
    check "ptp4l never followed our clock" \
      test "$(count_lines "${theirs}" 'to (UNCALIBRATED|SLAVE) on')" -eq 0
    check "ours went through UNCALIBRATED to SLAVE" grep -q -- 'UNCALIBRATED -> SLAVE$' "${ours}"
    check "ours was still SLAVE at the end" grep -q -- 'SLAVE -> STOPPED$' "${ours}"
    ;;
  ptp4l-slave)
    ptp4l_config "${config}" "${PTP4L_SLAVE[@]}"
    # The master outlives the slave, which must not see it go.
    ptp4l_run 1 "${seconds}" "${config}" >"${theirs}" 2>&1 &
    netns_run 2 $((seconds + 10)) "${clock}" --interface "${NETNS_DEVICE}" --priority1 100 \
      "${CLOCK_FAST[@]}" "${ours_timestamps[@]}" --clock-offset-ns "-${offset_ns}" \
      --duration $((seconds + 2)) >"${ours}" 2>&1 &
    wait
    echo "--- ptp4l (per-Sync lines and the adjustments it was refused left out)"
    grep -v -e 'master offset' -e 'failed to adjust the clock' -e 'failed to set clock' \
      "${theirs}"
    echo "--- ours"
    cat "${ours}"
    read -r count median p95 < <(ptp4l_offset_errors "${theirs}" "${offset_ns}" | stats)
    delay=$(ptp4l_delays "${theirs}" | mean)
    echo "ptp4l: ${count} samples, |offset - 37 ms| median ${median} ns, p95 ${p95} ns;" \
      "mean path delay ${delay} ns"
    check "ours took the master's role" grep -q -- 'LISTENING -> MASTER$' "${ours}"
    check "ours never followed ptp4l" \
      test "$(count_lines "${ours}" '-> (UNCALIBRATED|SLAVE)$')" -eq 0
    check "ptp4l selected our clock" \
      grep -q "selected best master clock $(awk '/^clock / { print $2; exit }' "${ours}")" \
      "${theirs}"
    check "ptp4l went through UNCALIBRATED to SLAVE" \
      grep -q 'UNCALIBRATED to SLAVE on MASTER_CLOCK_SELECTED' "${theirs}"
    check "ptp4l did not leave SLAVE" \
      test "$(count_lines "${theirs}" 'SLAVE to ')" -eq 0
    ;;
  *)
    echo "usage: interop_ptp4l_test.sh <zmptp_clock> ptp4l-master|ptp4l-slave" >&2
    exit 2
    ;;
esac
check "the slave has at least ${min_samples} samples with a measured path delay" \
  test "${count}" -ge "${min_samples}"
check "the slave measures +37 ms within ${max_median_error_ns} ns (median)" \
  below "${median}" "${max_median_error_ns}"
check "ours had the kernel's stamp for every event message" clock_kernel_stamped "${ours}"
[ "${failures}" -eq 0 ]
