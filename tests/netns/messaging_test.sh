#!/usr/bin/env bash
# The network layer between two namespaces: over a veth pair, then across a
# bridge. The test program runs inside the first namespace and opens its peer
# in the last one.
#   messaging_test.sh <test program> [gtest arguments...]
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
program=$1
shift
# shellcheck source-path=SCRIPTDIR source=netns.sh
source "${here}/netns.sh"
netns_require_root

run_topology() {
  local count=$1 peer
  shift
  peer=${count}
  netns_setup "${count}" || { echo "FAIL: namespaces could not be built" >&2; return 1; }
  # Spare devices beside the link: one without an IPv4 address, and two that
  # share a MAC address, of which only the later one has an address.
  # They are veth pairs with both ends in the namespace, and stay down.
  if ! { netns_ip 1 link add zmbare0 address 02:5a:6d:ee:00:01 type veth peer name zmbare1 &&
    netns_ip 1 link add zmshr0 address 02:5a:6d:ee:00:02 type veth \
      peer name zmshr1 address 02:5a:6d:ee:00:02 &&
    netns_ip 1 addr add 169.254.250.1/32 dev zmshr1; }; then
    echo "FAIL: spare devices could not be made" >&2
    return 1
  fi
  # A second link straight to the peer, beside the PTP device: the group's
  # datagrams on it must not reach the network layer.
  if ! { netns_ip 1 link add zmalt0 type veth peer name zmalt0 netns "$(netns_name "${peer}")" &&
    netns_ip 1 addr add 169.254.251.1/24 dev zmalt0 &&
    netns_ip "${peer}" addr add 169.254.251.2/24 dev zmalt0 &&
    netns_ip 1 link set zmalt0 up && netns_ip "${peer}" link set zmalt0 up; }; then
    echo "FAIL: the second link could not be made" >&2
    return 1
  fi

  echo "=== ${count} namespaces: $(netns_name 1) <-> $(netns_name "${peer}")"
  ZMPTP_LOCAL_NETNS=$(netns_name 1) ZMPTP_PEER_NETNS=$(netns_name "${peer}") \
    ZMPTP_DEVICE=${NETNS_DEVICE} \
    ZMPTP_LOCAL_MAC=$(netns_mac 1) ZMPTP_PEER_MAC=$(netns_mac "${peer}") \
    ZMPTP_LOCAL_ADDRESS=$(netns_address 1) ZMPTP_PEER_ADDRESS=$(netns_address "${peer}") \
    ZMPTP_BARE_MAC=02:5a:6d:ee:00:01 ZMPTP_SHARED_MAC=02:5a:6d:ee:00:02 \
    ZMPTP_SHARED_ADDRESS=169.254.250.1 ZMPTP_OTHER_DEVICE=zmalt0 \
    netns_run 1 14 "${program}" "$@"
  local result=$?
  netns_cleanup
  return "${result}"
}

run_topology 2 "$@" || exit 1
run_topology 3 "$@" || exit 1
