#!/usr/bin/env bash
# libzm_ptp.so in a host program in a namespace, beside a better master: the
# program's online case (tZmPtpLibraryTest.cpp) on the device of the namespace.
#   zm_ptp_library_netns_test.sh <zm_ptp_library_test> <zmptp_clock>
set -uo pipefail
netns=$(cd "$(dirname "$0")/../../tests/netns" && pwd)
# shellcheck source-path=SCRIPTDIR source=../../tests/netns/clock_common.sh
source "${netns}/clock_common.sh"
netns_require_root
clock_test_start 2
netns_run 2 60 "$2" --interface "${NETNS_DEVICE}" --priority1 10 "${CLOCK_FAST[@]}" \
  --duration 55 >"${work}/master.log" 2>&1 &
# A clock's identity: the first three bytes of its MAC address, ff fe, the last three.
ZM_TEST_MAC=$(netns_mac 1) ZM_TEST_ADDRESS=$(netns_address 1) \
  ZM_TEST_MASTER_IDENTITY=$(netns_mac 2 | awk -F: '{ print $1 $2 $3 "fffe" $4 $5 $6 }') \
  netns_run 1 50 "$1" --gtest_filter='*OnItsDevice*'
