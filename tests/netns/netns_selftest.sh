#!/usr/bin/env bash
# Checks the namespace harness itself: both topologies carry traffic, time
# limits and link control work, and nothing is left behind after a normal
# end, a failure, a signal, or a run that was killed outright.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source-path=SCRIPTDIR source=netns.sh
source "${here}/netns.sh"
netns_require_root

failures=0
work=$(mktemp -d)
netns_on_exit() {
  rm -rf "${work}"
}
trap netns_on_exit EXIT

# The namespaces of the harness run by the shell with this pid.
namespaces_of() {
  ip netns list | awk '{print $1}' | grep -E "^zmptp-$1-" || true
}

none_left() {
  [ -z "$(namespaces_of "$1")" ]
}

# Runs a child shell with the harness; waits (bounded) until it has written
# its ready file. Leaves the child's pid in $child.
start_child() {
  local script=$1 _
  rm -f "${work}/ready"
  bash -c "source '${here}/netns.sh'; ${script}" &
  child=$!
  for _ in $(seq 1 100); do
    [ -f "${work}/ready" ] && return 0
    kill -0 "${child}" 2>/dev/null || return 1
    sleep 0.1
  done
  return 1
}

# Waits (bounded) for a process that is not our child to end.
gone() {
  local pid=$1 _
  for _ in $(seq 1 100); do
    kill -0 "${pid}" 2>/dev/null || return 0
    sleep 0.1
  done
  return 1
}

# True when namespace <from> resolves the address of namespace <to> to its
# MAC address: a datagram from one makes the other answer its address query.
reaches() {
  local from=$1 to=$2 attempts=${3:-50} _
  netns_ip "${from}" neigh flush dev "${NETNS_DEVICE}"
  ip netns exec "$(netns_name "${from}")" \
    bash -c "echo probe > /dev/udp/$(netns_address "${to}")/9" 2>/dev/null
  for _ in $(seq 1 "${attempts}"); do
    netns_ip "${from}" neigh show "$(netns_address "${to}")" |
      grep -q "lladdr $(netns_mac "${to}")" && return 0
    sleep 0.1
  done
  return 1
}

unreachable() {
  ! reaches "$@"
}

# --- Topologies carry traffic ---
netns_setup 2
check "veth pair: namespace 1 reaches namespace 2" reaches 1 2
check "multicast is routed to the device" \
  bash -c "ip -n $(netns_name 1) route show 224.0.0.0/4 | grep -q ${NETNS_DEVICE}"
netns_run 1 1 sleep 30
check "a time limit ends the command with 124" test $? -eq 124
netns_run 2 5 true
check "a command's own exit code comes back" test $? -eq 0
netns_link 2 down
check "link down takes the device down" \
  bash -c "! ip -n $(netns_name 2) link show ${NETNS_DEVICE} | grep -q 'state UP'"
check "no traffic while the link is down" unreachable 1 2 20
netns_link 2 up
check "traffic again after link up" reaches 1 2
netns_cleanup
check "clean-up removes the namespaces" none_left "${BASHPID}"

netns_setup 4
check "bridge: namespace 1 reaches namespace 4" reaches 1 4
check "bridge: namespace 3 reaches namespace 2" reaches 3 2
netns_cleanup
check "clean-up removes the namespaces and the bridge" none_left "${BASHPID}"

# --- Nothing is left behind ---
bash -c "source '${here}/netns.sh'; netns_setup 2 && netns_run 1 5 true" &
child=$!
wait "${child}"
check "normal end" none_left "${child}"

bash -c "set -e; source '${here}/netns.sh'; netns_setup 2; false; echo unreachable" &
child=$!
wait "${child}"
check "failure ends the run with its code" test $? -eq 1
check "failure" none_left "${child}"

for signal in TERM INT HUP; do
  # Job control keeps an interrupt from being ignored by the background shell.
  set -m
  start_child "netns_setup 2 && touch '${work}/ready' && netns_run 1 30 sleep 30"
  started=$?
  set +m
  check "${signal}: child is running" test "${started}" -eq 0
  # The ready file comes before the process inside starts: wait for it, bounded.
  inside=""
  for _ in $(seq 50); do
    inside=$(ip netns pids "zmptp-${child}-1" 2>/dev/null | tr '\n' ' ')
    [ -n "${inside}" ] && break
    sleep 0.1
  done
  check "${signal}: a process runs in the namespace" test -n "${inside}"
  kill -"${signal}" "${child}"
  wait "${child}"
  check "${signal}: namespaces removed" none_left "${child}"
  for pid in ${inside}; do
    check "${signal}: process ${pid} inside has ended" gone "${pid}"
  done
done

# The shell becomes the sleep: killing it leaves no process behind, only the
# namespaces.
start_child "netns_setup 2 && touch '${work}/ready' && exec sleep 30"
check "killed outright: namespaces stay at first" test -n "$(namespaces_of "${child}")"
kill -KILL "${child}"
wait "${child}" 2>/dev/null
netns_setup 2
check "killed outright: the next setup removes them" none_left "${child}"
netns_cleanup

echo "${failures} failure(s)"
[ "${failures}" -eq 0 ]
