#!/usr/bin/env bash
# zmhost's answer to each kind of bad start: its exit code and the message on
# standard error. No root needed, and no traffic: the refused start names a
# device no machine has.
#   command_line_test.sh <zmhost>
set -uo pipefail
zmhost=$1
# shellcheck source-path=SCRIPTDIR source=../../../tests/netns/netns.sh
source "$(dirname "$0")/../../../tests/netns/netns.sh"
work=$(mktemp -d)
trap 'rm -rf "${work}"' EXIT
failures=0
mkdir -p "${work}/absent/orv-rt/system/zelmar"
printf '[ZELMAR]\r\nsource.ptp.EthernetMacAddress = 02-00-5e-00-53-77\r\n' \
  >"${work}/absent/orv-rt/system/zelmar/zelmar-ptp.ini"

# exit code | message (extended regex) | arguments, one a line apart by tabs
cases="\
2	unknown option --bogus	--bogus
2	unknown option -x	-x
2	option --duration needs a value	-d
2	invalid value 'abc' for --duration	-d	abc
2	invalid value '-1' for --duration	--duration	-1
2	invalid value '4' for --level	--level	4
2	invalid value '' for --interface	--interface=
2	invalid value 'an-interface-name-too-long' for --interface	-i	an-interface-name-too-long
2	invalid value '20000' for --clock-ppm	--clock-ppm	20000
2	invalid value '1.5' for --clock-offset-ns	--clock-offset-ns	1.5
2	unexpected argument 'stray'	-q	stray
2	--config /tmp/x.ini: the library reads only ROOT/orv-rt/system/zelmar/zelmar-ptp.ini	-f	/tmp/x.ini
2	cannot write ${work}/none/status.csv: No such file or directory	--csv	${work}/none/status.csv
3	cannot load the plug-in library: ${work}/none.so: cannot open	-L	${work}/none.so
4	no network device is named zmhostnone0	-i	zmhostnone0
5	did not come online within 0.3 s	-r	${work}/absent	-t	0.3"

while IFS=$'\t' read -r code message arguments; do
  IFS=$'\t' read -r -a argv <<<"${arguments}"
  "${zmhost}" "${argv[@]}" >/dev/null 2>"${work}/stderr"
  result=$?
  check "zmhost ${argv[*]}: exit ${code} (got ${result})" test "${result}" -eq "${code}"
  check "zmhost ${argv[*]}: says '${message}'" grep -qE "^zmhost: .*${message}" "${work}/stderr" ||
    cat "${work}/stderr"
done <<<"${cases}"
[ "${failures}" -eq 0 ]
