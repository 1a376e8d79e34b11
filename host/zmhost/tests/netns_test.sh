#!/usr/bin/env bash
# zmhost with the plug-in behind a ptp4l master, in namespaces: it reaches
# SLAVE and the synchronized flag; its JSON lines parse and agree with what
# pmc reads from the same clock by PTP management; SIGTERM ends it with exit
# code 0 within a second, leaving no process and the settings file as it was.
#   netns_test.sh <zmhost>
# Namespace 1 runs ptp4l, 2 zmhost, 3 pmc, on one bridge.
set -uo pipefail
zmhost=$1
# shellcheck source-path=SCRIPTDIR source=../../../tests/netns/clock_common.sh
source "$(dirname "$0")/../../../tests/netns/clock_common.sh"
# shellcheck source-path=SCRIPTDIR source=../../../tests/netns/plugin_common.sh
source "$(dirname "$0")/../../../tests/netns/plugin_common.sh"
netns_require_root
ptp4l_require
command -v pmc >/dev/null || { echo "FAIL: pmc (linuxptp) is missing" >&2; exit 1; }
clock_test_start 3

ptp4l_config "${work}/master.cfg" "${PTP4L_MASTER[@]}"
ptp4l_run 1 60 "${work}/master.cfg" >"${work}/ptp4l.log" 2>&1 &
# The file without a device: zmhost --interface writes its MAC address.
directory=${work}/root/orv-rt/system/zelmar
mkdir -p "${directory}"
printf '[ZELMAR]\r\nsource.ptp.LogAnnounceInterval = 4294967294\r\n' >"${directory}/zelmar-ptp.ini"
netns_run 2 60 "${zmhost}" --interface "${NETNS_DEVICE}" --root "${work}/root" --json \
  --clock-offset-ns 3000000 --clock-ppm 10 >"${work}/zmhost.json" 2>"${work}/zmhost.err" &
host=$!

master=$(netns_mac 1 | awk -F: '{ print $1 $2 $3 "fffe" $4 $5 $6 }')
# Its clock starts 3 ms off: the flag is lost at the first samples and must
# be earned by steering.
check "zmhost reaches SLAVE, out of sync at first" wait_for_line "${work}/zmhost.json" \
  '"state":"SLAVE","synchronized":false' 20
synchronized_again() {
  awk '/"state":"SLAVE","synchronized":false/ { lost = 1 }
       lost && /"state":"SLAVE","synchronized":true/ { found = 1 }
       END { exit !found }' "${work}/zmhost.json"
}
check "then it gains the synchronized flag" plugin_wait 40 synchronized_again
check "zmhost wrote the device's MAC address into its file" \
  grep -qi "^source.ptp.EthernetMacAddress = \"$(netns_mac 2 | tr : -)\"" "${directory}/zelmar-ptp.ini"
cp "${directory}/zelmar-ptp.ini" "${work}/written.ini"
# One status line a second: the next one is read beside pmc's answers.
lines=$(count_lines "${work}/zmhost.json" '"state"')
wait_for_line "${work}/zmhost.json" '"state"' 3 $((lines + 1))
ip netns exec "$(netns_name 3)" pmc -4 -i "${NETNS_DEVICE}" -b 0 'GET DEFAULT_DATA_SET' \
  'GET PARENT_DATA_SET' 'GET PORT_DATA_SET' 'GET CURRENT_DATA_SET' >"${work}/pmc.log" 2>&1

# Every line must parse; the last status line's fields, in pmc's words.
if ! python3 - "${work}/zmhost.json" >"${work}/ours.txt" <<'PYTHON'; then
import json, sys
last = None
for line in open(sys.argv[1]):
    record = json.loads(line)
    if "state" in record:
        last = record
def identity(text):
    return f"{text[0:6]}.{text[6:10]}.{text[10:16]}"
print("clock", identity(last["clock"]))
for tlv, field, key in [("DEFAULT_DATA_SET", "clockIdentity", "clock"),
                        ("DEFAULT_DATA_SET", "priority1", "priority1"),
                        ("DEFAULT_DATA_SET", "clockClass", "clock_class"),
                        ("PARENT_DATA_SET", "grandmasterIdentity", "grandmaster"),
                        ("PARENT_DATA_SET", "grandmasterPriority1", "gm_priority1"),
                        ("PARENT_DATA_SET", "gm.ClockClass", "gm_clock_class"),
                        ("PORT_DATA_SET", "portState", "state"),
                        ("CURRENT_DATA_SET", "stepsRemoved", "steps_removed")]:
    value = last[key]
    print(tlv, field, identity(value) if key in ("clock", "grandmaster") else value)
PYTHON
  echo "FAIL the JSON lines do not parse"
  cat "${work}/zmhost.json"
  exit 1
fi
echo "ok   every JSON line parses"
ours=$(awk '$1 == "clock" { print $2 }' "${work}/ours.txt")
check "zmhost's grandmaster is the ptp4l master" \
  grep -qx "PARENT_DATA_SET grandmasterIdentity ${master:0:6}.${master:6:4}.${master:10:6}" \
  "${work}/ours.txt"
# pmc's answers of our clock: "<TLV> <field> <value>".
awk -v ours="${ours}" '
  $4 == "RESPONSE" && $5 == "MANAGEMENT" { mine = index($1, ours "-") == 1; tlv = $6; next }
  mine && NF == 2 { print tlv, $1, $2 }' "${work}/pmc.log" >"${work}/theirs.txt"
while read -r tlv field value; do
  [ "${tlv}" = clock ] && continue
  check "pmc reads ${tlv} ${field} ${value}" grep -qxF "${tlv} ${field} ${value}" "${work}/theirs.txt"
done <"${work}/ours.txt"

# SIGTERM to zmhost itself, mid-run.
read -r pid < <(ip netns pids "$(netns_name 2)" | while read -r p; do
  [ "$(cat "/proc/${p}/comm" 2>/dev/null)" = zmhost ] && echo "${p}"
done)
start=$(date +%s%N)
kill -TERM "${pid}"
while kill -0 "${pid}" 2>/dev/null && [ $((($(date +%s%N) - start) / 1000000)) -lt 3000 ]; do
  sleep 0.01
done
elapsed_ms=$((($(date +%s%N) - start) / 1000000))
wait "${host}"
code=$?
echo "zmhost ended ${elapsed_ms} ms after SIGTERM"
check "zmhost exits 0 on SIGTERM (got ${code})" test "${code}" -eq 0
check "zmhost ends within a second of SIGTERM" test "${elapsed_ms}" -lt 1000
check "zmhost tells why it stopped, and sums up" \
  grep -qE '"event":"stop","reason":"SIGTERM"' "${work}/zmhost.json"
check "no process is left in zmhost's namespace" test -z "$(ip netns pids "$(netns_name 2)")"
check "the settings file is as zmhost wrote it" cmp -s "${directory}/zelmar-ptp.ini" "${work}/written.ini"
check "no temporary file is left beside it" test "$(find "${directory}" -type f | wc -l)" -eq 1
netns_cleanup
check "no namespace is left" test -z "$(ip netns list | grep -F "${NETNS_PREFIX}-")"
if [ "${failures}" -ne 0 ]; then
  cat "${work}/zmhost.json" "${work}/zmhost.err" "${work}/pmc.log"
fi
[ "${failures}" -eq 0 ]
