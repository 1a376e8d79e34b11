# shellcheck shell=bash
# For the test and the benchmark that run zmptp_plugin_host, the time source
# with the PTP plug-in, in the namespaces of netns.sh. Source after netns.sh.
#
#   plugin_start <work> <host> <i> <seconds> [<attribute = value>...]
#                               writes the source's file under <work>/root (the
#                               MAC address of namespace i's device, short
#                               intervals, the given attributes) and runs the
#                               host program in namespace i, its reference
#                               starting 1 s off, its commands from a FIFO.
#                               Sets plugin_log, plugin_file, plugin_pid.
#   plugin_command <text>       sends one command.
#   plugin_stop                 ends the command stream; the program ends.
#   plugin_errors_after <log> <regex> [n]
#                               "count largest" of the |error| lines after the
#                               last line that matches (of the last n of them);
#                               "0 -" for none.
#   plugin_gaps <log> <from regex> <to regex>
#                               the milliseconds from each line that matches
#                               <from> to the next that matches <to>.
#   plugin_field <line> <name>  the value of <name>=<value> in a line.
#   plugin_wait <seconds> <command...>
#                               true as soon as the command is.

# Sync 2/s, Announce and Delay_Req 4/s: a silent master is noticed in 0.75 s.
_PLUGIN_ATTRIBUTES=("LogSyncInterval = 4294967295" "LogAnnounceInterval = 4294967294"
  "LogMinDelayReqInterval = 4294967294")

plugin_start() {
  local work=$1 host=$2 index=$3 seconds=$4 attribute
  shift 4
  mkdir -p "${work}/root/orv-rt/system/zelmar" || return 1
  plugin_file="${work}/root/orv-rt/system/zelmar/zelmar-ptp.ini"
  plugin_log="${work}/host.log"
  {
    printf '[ZELMAR]\r\n'
    printf 'source.ptp.EthernetMacAddress = %s\r\n' "$(netns_mac "${index}")"
    for attribute in "${_PLUGIN_ATTRIBUTES[@]}" "$@"; do
      printf 'source.ptp.%s\r\n' "${attribute}"
    done
  } >"${plugin_file}"
  mkfifo "${work}/commands" || return 1
  # One malloc arena, so that the heap count covers every thread.
  ZM_PTP_ROOT="${work}/root" MALLOC_ARENA_MAX=1 netns_run "${index}" "${seconds}" "${host}" \
    --offset-ns 1000000000 --commands "${work}/commands" >"${plugin_log}" 2>&1 &
  plugin_pid=$!
  exec 3>"${work}/commands"
}

plugin_command() {
  echo "$1" >&3
}

plugin_stop() {
  exec 3>&-
  wait "${plugin_pid}"
}

plugin_errors_after() {
  awk -v start="$2" -v last="${3:-0}" '
    $0 ~ start { n = 0; seen = 1; next }
    seen && $2 == "error" { e[++n] = $3 < 0 ? -$3 : $3 }
    END {
      first = last > 0 && n > last ? n - last + 1 : 1
      m = -1
      for (i = first; i <= n; i++) if (e[i] > m) m = e[i]
      if (m < 0) print 0, "-"; else print n - first + 1, m
    }' "$1"
}

plugin_gaps() {
  awk -v from="$2" -v to="$3" '
    $0 ~ from { t = $1; pending = 1; next }
    pending && $0 ~ to { print $1 - t; pending = 0 }' "$1"
}

plugin_field() {
  sed -E "s/.* $2=([0-9-]+).*/\1/" <<<"$1"
}

plugin_wait() {
  local deadline=$((SECONDS + $1))
  shift
  until "$@"; do
    [ "${SECONDS}" -ge "${deadline}" ] && return 1
    sleep 0.05
  done
}
