#!/usr/bin/env bash
# PTP management of our clock from outside, over UDP/IPv4: our clock
# (zmptp_clock, master) in namespace 1, the requesters in 2 (linuxptp's pmc
# and management_peer.py), a ptp4l slave in 3 that follows our clock.
#  1. pmc reads every managementId that it knows, and the answers must be
#     what our clock was started with; it sets PRIORITY1 and PRIORITY2, and
#     our Announce messages (tshark) and ptp4l's parent data set follow.
#  2. The peer sends refused and malformed requests in pmc's name while pmc
#     listens: each gets its expected answer, and pmc prints the refusals as
#     MANAGEMENT_ERROR_STATUS.
#  3. The peer sends every managementId with every action (the port commands
#     among them), then floods 1000 requests a second for 10 s: all answered,
#     while our clock stays MASTER and its Sync and Delay_Resp messages keep
#     their pace for ptp4l.
#  4. The peer sets DOMAIN: our clock announces in the new domain.
# The plug-in writes what management changes into its settings file: it
# knows such changes by the management context, which zmptp_clock's
# management_change lines show here.
#   management_interop_test.sh <zmptp_clock> <tManagementIds.def> [python3]
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
clock=$1
table=$2
python=${3:-python3}
# shellcheck source-path=SCRIPTDIR source=clock_common.sh
source "${here}/clock_common.sh"
netns_require_root
ptp4l_require
for tool in pmc tshark "${python}"; do
  command -v "${tool}" >/dev/null 2>&1 || {
    echo "FAIL: ${tool} is needed; run scripts/setup" >&2
    exit 1
  }
done

clock_test_start 3
ours="${work}/ours.log"
theirs="${work}/ptp4l.log"
ptp4l_config "${work}/ptp4l.cfg" "${PTP4L_SLAVE[@]}"
netns_run 1 130 "${clock}" --interface "${NETNS_DEVICE}" --priority1 100 "${CLOCK_FAST[@]}" \
  --duration 120 >"${ours}" 2>&1 &
ptp4l_run 3 130 "${work}/ptp4l.cfg" >"${theirs}" 2>&1 &
if ! wait_for_line "${ours}" '-> MASTER$' 15 || ! wait_for_line "${theirs}" 'to SLAVE on' 20; then
  echo "FAIL: our clock did not become master of ptp4l" >&2
  cat "${ours}" "${theirs}"
  exit 1
fi
dotted=$(awk '/^clock / { print $2; exit }' "${ours}")
identity=${dotted//./}
mac=$(netns_mac 2)
pmc_identity=${mac:0:2}${mac:3:2}${mac:6:2}fffe${mac:9:2}${mac:12:2}${mac:15:2}

# pmc asks our clock alone: ptp4l answers requests to all clocks too.
pmc_ask() {
  netns_run 2 10 pmc -4 -i "${NETNS_DEVICE}" -b 0 "TARGET ${dotted}-1" "$@" 2>&1 |
    grep -v '^sending: '
}
peer() {
  netns_run 2 60 "${python}" "${here}/management_peer.py" "$@" --address "$(netns_address 2)" \
    --table "${table}" --victim-identity "${identity}"
}
# shows <file> <label> <value>: pmc printed the field with that value.
shows() {
  grep -qE "^[[:space:]]+$2[[:space:]]+$3[[:space:]]*\$" "$1"
}
# <type> <fields...> of the next <count> messages of that type from our clock.
sniff() {
  local type=$1 count=$2
  shift 2
  netns_run 2 5 tshark -i "${NETNS_DEVICE}" -c "${count}" \
    -f "udp port 320 and udp[8] & 0x0f == ${type} and udp[28:4] == 0x${identity:0:8}" \
    -T fields "${@/#/-e}" 2>/dev/null
}
# The last state that a zmptp_clock log, or a ptp4l log, tells.
our_state() {
  awk '/^state / { state = $NF } END { print state }' "${ours}"
}
their_state() {
  awk '/ to [A-Z_]+ on / { for (i = 1; i < NF; i++) if ($i == "to") state = $(i + 1) }
    END { print state }' "${theirs}"
}
# poll <seconds> <command...>: true as soon as the command is.
poll() {
  local deadline=$((SECONDS + $1))
  shift
  until "$@"; do
    [ "${SECONDS}" -ge "${deadline}" ] && return 1
    sleep 0.1
  done
}

echo "=== 1. pmc: every managementId it knows, and the SETs it can send"
known=$(netns_run 2 5 pmc -u -b 0 -s "${work}/none" help 2>&1 | awk '$1 == "[action]" { print $2 }')
commands=()
while read -r name; do
  grep -qx "${name}" <<<"${known}" && commands+=("GET ${name}")
done < <(grep -oE '^ORVPTP_MANAGEMENT(_VALUE)?_TLV\(0x[0-9A-F]+, [A-Z0-9_]+' "${table}" |
  awk '{ print $2 }')
commands+=("SET PRIORITY1 60" "SET PRIORITY2 61" "GET PRIORITY1" "GET PRIORITY2")
pmc_ask "${commands[@]}" | tee "${work}/pmc.txt"
check "pmc sent ${#commands[@]} requests and got as many answers" \
  test "$(grep -c 'RESPONSE MANAGEMENT' "${work}/pmc.txt")" -eq "${#commands[@]}"
while read -r label value; do
  check "pmc reads ${label} ${value}" shows "${work}/pmc.txt" "${label}" "${value}"
done <<EOF
clockIdentity ${dotted}
numberPorts 1
twoStepFlag 1
domainNumber 0
portIdentity ${dotted}-1
portState MASTER
logAnnounceInterval -2
logSyncInterval -3
logMinDelayReqInterval -3
announceReceiptTimeout 3
delayMechanism 1
versionNumber 2
grandmasterIdentity ${dotted}
stepsRemoved 0
ptpTimescale 0
timeSource 0xa0
priority1 100
priority1 60
priority2 61
EOF
check "the node reported both changes in the management context" \
  grep -qz 'management_change property=7.management_change property=8' "${ours}"
check "our Announce messages carry priority1 60" \
  test "$(sniff 11 2 ptp.v2.an.priority1 | sort -u)" = 60
check "ptp4l's grandmaster has priority1 60" \
  shows <(netns_run 3 5 pmc -u -b 0 -s "${work}/ptp4l.sock" "GET PARENT_DATA_SET" 2>&1) \
  grandmasterPriority1 60


echo "=== 2. refused and malformed requests, in pmc's name while pmc listens"
(echo "GET NULL_MANAGEMENT" && sleep 12) | netns_run 2 15 pmc -4 -i "${NETNS_DEVICE}" -b 0 \
  >"${work}/listening.txt" 2>&1 &
listener=$!
sleep 1
check "each malformed or misaddressed request got its answer" \
  peer bad --identity "${pmc_identity}" | tee "${work}/bad.txt"
wait "${listener}"
cat "${work}/listening.txt"
refusals=$(grep -c ' error 0x' "${work}/bad.txt")
check "pmc printed our clock's ${refusals} refusals" \
  test "$(grep -c "^.${dotted}-1 .*MANAGEMENT_ERROR_STATUS" "${work}/listening.txt")" \
  -eq "${refusals}"

echo "=== 3. every managementId with every action, then a flood"
check "every managementId answers every action as offered" peer sweep
serving() {
  [ "$(our_state)" = MASTER ] && [ "$(their_state)" = SLAVE ]
}
check "after the port commands our clock is master of ptp4l again" poll 30 serving
pmc_ask "GET DEFAULT_DATA_SET" | tail -n +2 >"${work}/before.txt"
mark_ours=$(wc -l <"${ours}")
mark_theirs=$(wc -l <"${theirs}")
netns_run 2 14 tshark -i "${NETNS_DEVICE}" -a duration:11 -w "${work}/flood.pcap" \
  -f "udp port 319 or (udp port 320 and udp[8] & 0x0f == 9)" 2>/dev/null &
sniffer=$!
sleep 0.5
check "1000 requests a second for 10 s are all answered" peer flood --rate 1000 --seconds 10
wait "${sniffer}"
read -r syncs responses requests gap < <(tshark -r "${work}/flood.pcap" -T fields \
  -e frame.time_relative -e ptp.v2.messagetype -e ptp.v2.clockidentity 2>/dev/null | awk \
  -v own="0x${identity}" '$2 == 0 && $3 == own { if (last != "" && $1 - last > gap) gap = $1 - last
    last = $1; syncs++ } $2 == 9 && $3 == own { responses++ } $2 == 1 { requests++ }
    END { printf "%d %d %d %d\n", syncs, responses, requests, gap * 1000 }')
echo "during the flood: ${syncs} Sync, ${responses} Delay_Resp to ${requests} Delay_Req," \
  "longest gap between Sync ${gap} ms"
check "our clock stayed MASTER through the flood" \
  test "$(tail -n +$((mark_ours + 1)) "${ours}" | grep -c '^state ')" -eq 0
check "ptp4l stayed SLAVE through the flood" \
  test "$(tail -n +$((mark_theirs + 1)) "${theirs}" | grep -c ' to [A-Z]* on ')" -eq 0
check "Sync kept its pace of 8 a second (gap < 250 ms)" below "${gap}" 250
check "every Delay_Req got its Delay_Resp" test "${responses}" -ge $((requests - 2))
check "ptp4l kept measuring: 60 samples or more" \
  test "$(tail -n +$((mark_theirs + 1)) "${theirs}" | grep -c 'master offset')" -ge 60
check "our clock's default data set is what it was before the flood" \
  diff "${work}/before.txt" <(pmc_ask "GET DEFAULT_DATA_SET" | tail -n +2)

echo "=== 4. SET DOMAIN 7"
check "DOMAIN is set" peer set DOMAIN 0700
check "our clock announces in domain 7" test "$(sniff 11 1 ptp.v2.domainnumber)" = 7
check "pmc reads domainNumber 7 in domain 7" \
  shows <(pmc_ask -d 7 "GET DOMAIN") domainNumber 7
check "the node reported it in the management context" \
  grep -q 'management_change property=9' "${ours}"
[ "${failures}" -eq 0 ]
