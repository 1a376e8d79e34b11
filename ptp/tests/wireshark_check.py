#!/usr/bin/env python3
"""Cross-checks the message serialiser against Wireshark's PTP dissector.

Runs the capture tool (orvptp_wireshark_capture), which writes every message
type this clock sends together with the field values that were put into each
message, frames the datagrams as the clock sends them (Ethernet, IPv4 with TTL
1, UDP to 224.0.1.129) into a capture, dissects it with tshark and compares,
frame by frame:

  * the frame is Ethernet/IPv4/UDP/PTP, to 224.0.1.129 and the right port,
    with a good IPv4 header checksum;
  * every expected PTP field shows exactly the expected values, in order;
  * no part of the frame is marked malformed and no expert item of error
    severity is attached to it.

Exit status: 0 all frames pass, 1 a mismatch or a tool failure, 77 tshark is
not installed (the test is then reported as skipped).
"""

import argparse
import json
import os
import shutil
import struct
import subprocess
import sys

SKIP = 77
# Expert severities are the high bits of a 32-bit word; error is 0x00800000.
SEVERITY_ERROR = 0x00800000


GROUP_MAC = bytes.fromhex("01005e000181")
# A locally administered sender MAC and a documentation address.
SOURCE_MAC = bytes.fromhex("020000000001")
SOURCE_ADDRESS = bytes([192, 0, 2, 1])
GROUP_ADDRESS = bytes([224, 0, 1, 129])


def internet_checksum(data):
    """The one's complement sum over 16-bit words, as IPv4 headers use it."""
    total = sum(struct.unpack("!%dH" % (len(data) // 2), data))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


def ethernet_frame(datagram, port, identification):
    """Ethernet II, IPv4 without options, UDP without checksum."""
    udp = struct.pack("!HHHH", port, port, 8 + len(datagram), 0) + datagram
    ip = struct.pack("!BBHHHBBH4s4s", 0x45, 0, 20 + len(udp), identification, 0, 1, 17, 0,
                     SOURCE_ADDRESS, GROUP_ADDRESS)
    ip = ip[:10] + struct.pack("!H", internet_checksum(ip)) + ip[12:]
    return GROUP_MAC + SOURCE_MAC + struct.pack("!H", 0x0800) + ip + udp


def write_capture(path, expectations):
    """A classic pcap file, microsecond timestamps, Ethernet link type."""
    out = [struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 1)]
    for index, frame in enumerate(expectations):
        datagram = bytes.fromhex(frame["datagram"].replace(":", ""))
        packet = ethernet_frame(datagram, frame["udpPort"], 0x4000 + index)
        out.append(struct.pack("<IIII", 1700000000 + index, 0, len(packet), len(packet)))
        out.append(packet)
    with open(path, "wb") as file:
        file.write(b"".join(out))


def pairs_hook(pairs):
    """Keeps repeated keys: tshark writes one key per occurrence of a field."""
    return pairs


def flatten(node, out):
    """Appends every (key, value) leaf of a parsed tshark JSON node to out, in
    document order, and descends into subtrees."""
    if isinstance(node, list):
        if all(isinstance(item, tuple) and len(item) == 2 for item in node):
            for key, value in node:
                if isinstance(value, str):
                    out.append((key, value))
                elif isinstance(value, list) and value and all(
                    isinstance(item, str) for item in value
                ):
                    out.extend((key, item) for item in value)
                else:
                    out.append((key, None))
                    flatten(value, out)
        else:
            for item in node:
                flatten(item, out)


def layers_of(packet):
    """The 'layers' subtree of one packet of tshark's JSON output."""
    for key, value in packet:
        if key == "_source":
            for key2, value2 in value:
                if key2 == "layers":
                    return value2
    raise ValueError("packet without layers")


def values_match(actual, expected):
    if actual is None:
        return False
    if isinstance(expected, str):
        return actual.lower() == expected.lower()
    if isinstance(expected, float):
        try:
            return abs(float(actual) - expected) < 1e-6
        except ValueError:
            return False
    try:
        number = int(actual, 0)
    except ValueError:
        return False
    # 64-bit fields may be shown signed or unsigned.
    return (number - expected) % (1 << 64) == 0


def check_frame(index, expectation, layers):
    problems = []
    leaves = []
    flatten(layers, leaves)
    fields = {}
    for key, value in leaves:
        fields.setdefault(key, []).append(value)

    def single(name):
        values = fields.get(name, [])
        return values[0] if len(values) == 1 else None

    protocols = single("frame.protocols") or ""
    if protocols.split(":")[-1] != "ptp" or ":ip:udp:" not in protocols:
        problems.append("protocol stack is %r, not ...:ip:udp:ptp" % protocols)
    if single("eth.dst") != "01:00:5e:00:01:81":
        problems.append("eth.dst is %r" % single("eth.dst"))
    if single("ip.dst") != "224.0.1.129":
        problems.append("ip.dst is %r" % single("ip.dst"))
    if single("ip.checksum.status") != "1":
        problems.append("IPv4 header checksum status is %r, not good"
                        % single("ip.checksum.status"))
    port = str(expectation["udpPort"])
    if single("udp.dstport") != port or single("udp.srcport") != port:
        problems.append("UDP ports are %r/%r, not %s"
                        % (single("udp.srcport"), single("udp.dstport"), port))
    length = len(expectation["datagram"].replace(":", "")) // 2
    if single("udp.length") != str(8 + length):
        problems.append("udp.length is %r for a datagram of %d bytes"
                        % (single("udp.length"), length))

    for key, value in leaves:
        if key.startswith("_ws.malformed"):
            problems.append("marked malformed (%s)" % key)
    for message, severity in zip(fields.get("_ws.expert.message", []),
                                 fields.get("_ws.expert.severity", [])):
        if int(severity, 0) >= SEVERITY_ERROR:
            problems.append("expert error: %s" % message)
    if len(fields.get("_ws.expert.severity", [])) > len(fields.get("_ws.expert.message", [])):
        problems.append("expert item without message")

    for name, expected_values in expectation["fields"].items():
        actual_values = fields.get(name, [])
        if len(actual_values) != len(expected_values) or not all(
            values_match(a, e) for a, e in zip(actual_values, expected_values)
        ):
            problems.append("%s is %r, expected %r" % (name, actual_values, expected_values))

    status = "ok" if not problems else "FAILED"
    print("frame %2d %-24s %s (%d fields checked)"
          % (index + 1, expectation["name"], status, len(expectation["fields"])))
    for problem in problems:
        print("    " + problem)
    return not problems


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--capture-tool", required=True,
                        help="path of orvptp_wireshark_capture")
    parser.add_argument("--work-dir", required=True,
                        help="directory for the capture and the expectations")
    arguments = parser.parse_args()

    tshark = shutil.which("tshark")
    if tshark is None:
        print("SKIPPED: tshark is not installed (Debian package 'tshark'); "
              "the dissector cross-check cannot run")
        return SKIP

    os.makedirs(arguments.work_dir, exist_ok=True)
    pcap = os.path.join(arguments.work_dir, "messages.pcap")
    expect = os.path.join(arguments.work_dir, "messages.expected.json")
    result = subprocess.run([arguments.capture_tool, "--expect", expect])
    if result.returncode != 0:
        print("the capture tool failed with status %d" % result.returncode)
        return 1
    with open(expect, encoding="ascii") as file:
        expectations = json.load(file)
    write_capture(pcap, expectations)

    version = subprocess.run([tshark, "--version"], capture_output=True, text=True)
    print((version.stdout.splitlines() or ["tshark, version unknown"])[0])
    dissection = subprocess.run(
        [tshark, "-n", "-r", pcap, "-T", "json", "-o", "ip.check_checksum:TRUE"],
        capture_output=True, text=True)
    if dissection.returncode != 0:
        print("tshark failed with status %d:\n%s" % (dissection.returncode, dissection.stderr))
        return 1
    packets = json.loads(dissection.stdout, object_pairs_hook=pairs_hook)
    if len(packets) != len(expectations):
        print("tshark shows %d frames, the capture has %d" % (len(packets), len(expectations)))
        return 1

    passed = 0
    for index, (packet, expectation) in enumerate(zip(packets, expectations)):
        if check_frame(index, expectation, layers_of(packet)):
            passed += 1
    print("%d of %d frames match the dissector" % (passed, len(expectations)))
    return 0 if passed == len(expectations) else 1


if __name__ == "__main__":
    sys.exit(main())
