#!/usr/bin/env bash
# The Debian package of a build: made by cpack, extracted with dpkg -x into a
# scratch root, and zmhost run from there, where it must find the package's
# own libraries.
#   package_test.sh <build directory>
set -uo pipefail
build=$1
# shellcheck source-path=SCRIPTDIR source=../../tests/netns/netns.sh
source "$(dirname "$0")/../../tests/netns/netns.sh"
work=$(mktemp -d)
trap 'rm -rf "${work}"' EXIT
failures=0

if ! cpack --config "${build}/CPackConfig.cmake" -B "${work}/out" >"${work}/cpack.log" 2>&1; then
  cat "${work}/cpack.log"
  echo "FAIL cpack made no package"
  exit 1
fi
packages=("${work}"/out/zm-ptp_*.deb)
check "one package, ${packages[0]##*/}" test -f "${packages[0]}" -a "${#packages[@]}" -eq 1
dpkg -x "${packages[0]}" "${work}/root" || exit 1
root=${work}/root
zmhost=${root}/usr/bin/zmhost
for file in usr/lib/zm_ptp/libzm_ptp.so usr/lib/zm_ptp/libdgrt.so usr/lib/zm_ptp/liborv_emb.so \
  lib/systemd/system/zmhost@.service usr/share/doc/zm-ptp/examples/zelmar-ptp.ini; do
  check "the package holds /${file}" test -f "${root}/${file}"
done
check "its control file names the libraries it depends on" \
  grep -q '^Depends: .*libc6' <(dpkg-deb -f "${packages[0]}")

version=$("${zmhost}" --version)
check "zmhost --version exits 0" test $? -eq 0
check "zmhost --version tells the version" grep -qE '^zmhost [0-9]+\.[0-9]+\.[0-9]+$' <<<"${version}"
check "zmhost loads the package's libzm_ptp.so" \
  grep -qxF "library ${root}/usr/bin/../lib/zm_ptp/libzm_ptp.so" <<<"${version}"
help=$("${zmhost}" --help)
check "zmhost --help exits 0" test $? -eq 0
check "zmhost --help tells the options and exit codes" \
  grep -q -- '--interface NAME' <<<"${help}"
check "the unit runs the packaged zmhost on its instance's interface" \
  grep -qE '^ExecStart=/usr/bin/zmhost --interface %I ' "${root}/lib/systemd/system/zmhost@.service"
[ "${failures}" -eq 0 ]
