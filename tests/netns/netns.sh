# shellcheck shell=bash
# Network namespaces for tests, benchmarks and the demo. Source this file from
# bash; nothing here touches the machine's own interfaces.
#
#   netns_setup <n>             n namespaces zmptp-<pid>-1 .. -n, each with one
#                               device zmp0 (address 169.254.<x>.<i>/16, MAC
#                               02:5a:6d:<x>:00:<i>, multicast routed to it).
#                               n = 2: a veth pair between the two; n > 2: each
#                               joined by a veth to a bridge in namespace
#                               zmptp-<pid>-br. Registers netns_cleanup on EXIT
#                               and turns INT, TERM and HUP into an exit.
#   netns_run <i> <seconds> <command...>
#                               runs the command inside namespace i, killed
#                               after the time limit; returns its exit code
#                               (124 when the limit ran out).
#   netns_stop <i>              ends every process in namespace i: TERM, and
#                               KILL for what still runs 2 s later. (Killing
#                               the job of a netns_run does not reach the
#                               command inside.)
#   netns_ip <i> <ip arguments...>
#                               runs `ip` inside namespace i.
#   netns_link <i> down|up      takes the device of namespace i down or up.
#   netns_unplug <i>, netns_replug <i>
#                               (bridged only) deletes the device of namespace
#                               i with its bridge port, and makes both again
#                               with the same name, address and MAC address.
#   netns_name <i>, netns_address <i>, netns_mac <i>
#                               print the namespace's name, the device's IPv4
#                               address and its MAC address.
#   netns_cleanup               kills every process in our namespaces and
#                               deletes them; safe to call more than once, and
#                               called again at exit.
#   netns_require_root          exits 77 (the test's skip code) unless root.
#   check <what> <command...>   runs the command; prints "ok   <what>" or
#                               "FAIL <what>" and counts the failure in
#                               ${failures}.
#
# Settings, read by netns_setup: NETNS_SUBNET (the <x> above, default 100).
# A caller with clean-up of its own defines netns_on_exit; it runs first.
# Namespaces left behind by a killed run (its pid gone) are removed by the
# next netns_setup.

NETNS_DEVICE=zmp0
NETNS_PREFIX=""
NETNS_COUNT=0
NETNS_BRIDGED=0

netns_require_root() {
  if [ "$(id -u)" -ne 0 ]; then
    echo "SKIP: network namespaces and PTP ports 319/320 need root" >&2
    exit 77
  fi
  if ! command -v ip >/dev/null 2>&1; then
    echo "FAIL: the ip command (iproute2) is missing" >&2
    exit 1
  fi
}

netns_name() {
  echo "${NETNS_PREFIX}-$1"
}

netns_address() {
  echo "169.254.${NETNS_SUBNET}.$1"
}

netns_mac() {
  printf '02:5a:6d:%02x:00:%02x\n' "${NETNS_SUBNET}" "$1"
}

netns_ip() {
  local index=$1
  shift
  ip -n "$(netns_name "${index}")" "$@"
}

# Kills the processes of one namespace (politely, then not), and deletes it.
_netns_stop_named() {
  local namespace=$1 _
  local -a pids
  mapfile -t pids < <(ip netns pids "${namespace}" 2>/dev/null)
  if [ "${#pids[@]}" -gt 0 ]; then
    kill -TERM "${pids[@]}" 2>/dev/null
    for _ in 1 2 3 4 5 6 7 8 9 10; do
      mapfile -t pids < <(ip netns pids "${namespace}" 2>/dev/null)
      [ "${#pids[@]}" -eq 0 ] && break
      sleep 0.2
    done
    if [ "${#pids[@]}" -gt 0 ]; then
      kill -KILL "${pids[@]}" 2>/dev/null
    fi
  fi
}

netns_stop() {
  _netns_stop_named "$(netns_name "$1")"
}

_netns_remove() {
  _netns_stop_named "$1"
  ip netns delete "$1" 2>/dev/null || true
}

# Namespaces of runs whose shell is gone (killed without a chance to clean).
_netns_remove_stale() {
  local namespace pid
  for namespace in $(ip netns list 2>/dev/null | awk '{print $1}' | grep -E '^zmptp-[0-9]+-' || true); do
    pid=${namespace#zmptp-}
    pid=${pid%%-*}
    if ! kill -0 "${pid}" 2>/dev/null; then
      _netns_remove "${namespace}"
    fi
  done
}

netns_cleanup() {
  local index
  if [ -n "${NETNS_PREFIX}" ]; then
    for ((index = 1; index <= NETNS_COUNT; index++)); do
      _netns_remove "$(netns_name "${index}")"
    done
    if [ "${NETNS_BRIDGED}" -eq 1 ]; then
      _netns_remove "${NETNS_PREFIX}-br"
    fi
  fi
  NETNS_COUNT=0
  NETNS_BRIDGED=0
}

# The EXIT trap: the caller's own clean-up, then ours; the exit code stays.
_netns_exit() {
  local status=$?
  if declare -F netns_on_exit >/dev/null; then
    netns_on_exit || true
  fi
  netns_cleanup
  exit "${status}"
}

_netns_configure() {
  local index=$1 namespace
  namespace=$(netns_name "${index}")
  ip -n "${namespace}" link set "${NETNS_DEVICE}" address "$(netns_mac "${index}")" &&
    ip -n "${namespace}" addr add "$(netns_address "${index}")/16" dev "${NETNS_DEVICE}" &&
    ip -n "${namespace}" link set lo up &&
    ip -n "${namespace}" link set "${NETNS_DEVICE}" up &&
    ip -n "${namespace}" route add 224.0.0.0/4 dev "${NETNS_DEVICE}"
}

netns_setup() {
  local count=${1:-2} index namespace
  if ! [[ "${count}" =~ ^[0-9]+$ ]] || [ "${count}" -lt 2 ] || [ "${count}" -gt 200 ]; then
    echo "netns_setup: give 2 to 200 namespaces" >&2
    return 1
  fi
  NETNS_SUBNET=${NETNS_SUBNET:-100}
  NETNS_PREFIX="zmptp-${BASHPID}"
  trap _netns_exit EXIT
  trap 'exit 130' INT
  trap 'exit 143' TERM
  trap 'exit 129' HUP
  _netns_remove_stale

  NETNS_COUNT=${count}
  for ((index = 1; index <= count; index++)); do
    ip netns add "$(netns_name "${index}")" || return 1
  done
  if [ "${count}" -eq 2 ]; then
    # Both ends are made inside the namespaces: nothing appears outside.
    ip -n "$(netns_name 1)" link add "${NETNS_DEVICE}" type veth \
      peer name "${NETNS_DEVICE}" netns "$(netns_name 2)" || return 1
  else
    NETNS_BRIDGED=1
    namespace="${NETNS_PREFIX}-br"
    ip netns add "${namespace}" || return 1
    ip -n "${namespace}" link add br0 type bridge mcast_snooping 0 || return 1
    ip -n "${namespace}" link set lo up
    ip -n "${namespace}" link set br0 up || return 1
    for ((index = 1; index <= count; index++)); do
      ip -n "${namespace}" link add "port${index}" type veth \
        peer name "${NETNS_DEVICE}" netns "$(netns_name "${index}")" || return 1
      ip -n "${namespace}" link set "port${index}" master br0 up || return 1
    done
  fi
  for ((index = 1; index <= count; index++)); do
    _netns_configure "${index}" || return 1
  done
}

netns_run() {
  local index=$1 limit=$2 child
  shift 2
  # In the background, so that a signal to this shell is handled at once;
  # clean-up then kills what still runs in the namespace.
  ip netns exec "$(netns_name "${index}")" timeout --kill-after=5 "${limit}" "$@" &
  child=$!
  wait "${child}"
}

netns_link() {
  local index=$1 state=$2
  case "${state}" in
    down) netns_ip "${index}" link set "${NETNS_DEVICE}" down ;;
    # The kernel drops the device's routes with the link; the multicast
    # route comes back with it.
    up)
      netns_ip "${index}" link set "${NETNS_DEVICE}" up &&
        netns_ip "${index}" route replace 224.0.0.0/4 dev "${NETNS_DEVICE}"
      ;;
    *)
      echo "netns_link: down or up" >&2
      return 1
      ;;
  esac
}

check() {
  local what=$1
  shift
  if "$@"; then
    echo "ok   ${what}"
  else
    echo "FAIL ${what}"
    failures=$((failures + 1))
    return 1
  fi
}

netns_unplug() {
  netns_ip "$1" link delete "${NETNS_DEVICE}"
}

netns_replug() {
  local index=$1 bridge="${NETNS_PREFIX}-br"
  ip -n "${bridge}" link add "port${index}" type veth \
    peer name "${NETNS_DEVICE}" netns "$(netns_name "${index}")" &&
    ip -n "${bridge}" link set "port${index}" master br0 up &&
    _netns_configure "${index}"
}
