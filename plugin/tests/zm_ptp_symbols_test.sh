#!/usr/bin/env bash
# The dynamic symbols of libzm_ptp.so: the six exports and nothing else (its
# operator new and delete included); all it leaves to the process that loads
# it is the host's tTimeSourceImpl.
#   zm_ptp_symbols_test.sh <libzm_ptp.so>
set -uo pipefail
defined=$(nm -D --defined-only "$1" | awk '{ print $3 }' | sort | xargs)
unresolved=$(ldd -r "$1" 2>&1 | sed -En 's/^undefined symbol: ([^[:space:]]+).*/\1/p' | c++filt |
  grep -Ev '^(typeinfo for )?nZelmar::tTimeSourceImpl(::|$)' | xargs)
echo "defined: ${defined}"
echo "unresolved beyond tTimeSourceImpl: ${unresolved:-none}"
[ "${defined}" = "SetDGRTModule zm_ptp_closeSession zm_ptp_getProperty zm_ptp_getTimeSource \
zm_ptp_openSession zm_ptp_setProperty" ] && [ -z "${unresolved}" ]
