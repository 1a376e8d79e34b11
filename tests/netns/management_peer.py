#!/usr/bin/env python3
"""A PTP management peer for the namespace tests: requests that pmc cannot
send, malformed ones, and floods, to the clock at --victim-identity.

  sweep        every managementId of tManagementIds.def with every action:
               an offered action must come back with the TLV (RESPONSE or
               ACKNOWLEDGE), any other with MANAGEMENT_ERROR_STATUS
               NOT_SUPPORTED; a SET sends back what the GET read.
  set NAME HEX one SET with the data field HEX.
  bad          malformed and misaddressed requests, each with its expected
               answer (none, one without TLV, the TLV, an error id).
  flood        GET requests of every readable managementId at --rate a
               second for --seconds; all must be answered.
Every request goes to the PTP group from the device with --address; each
line printed ends in "ok" or "FAIL"; the exit status is 1 if any failed.
"""

import argparse
import re
import socket
import struct
import sys
import time

GROUP, GENERAL = "224.0.1.129", 320
GET, SET, RESPONSE, COMMAND, ACKNOWLEDGE = 0, 1, 2, 3, 4
OFFERS = {"kOfferGet": GET, "kOfferSet": SET, "kOfferCommand": COMMAND}
ONES = b"\xff" * 8
# The smallest data fields of the variable TLVs: empty texts, no records.
SMALLEST = {0x0001: bytes(22), 0x0002: bytes(2), 0x0006: bytes(2)}


def read_table(path):
    """(id, name, offered actions, data length or None) of each line."""
    table = []
    for line in open(path, encoding="ascii"):
        m = re.match(r"ORVPTP_MANAGEMENT(_VALUE)?_TLV\((0x[0-9A-F]+), (\w+), \w+, (.*)\)$", line)
        if m:
            value, rest = m.group(1), m.group(4).split(", ")
            offers = "kOfferGet | kOfferSet" if value else rest[0]
            length = "2" if value else rest[1]
            table.append((int(m.group(2), 16), m.group(3),
                          [a for n, a in OFFERS.items() if n in offers],
                          None if length == "kVariableLength" else int(length)))
    return table


def smallest(management_id, length):
    return SMALLEST.get(management_id, bytes(length or 0))


def tlv(management_id, data=b"", length=None):
    return struct.pack(">HHH", 1, 2 + len(data) if length is None else length,
                       management_id) + data


def request(sequence, action, tlvs, target=ONES + b"\xff\xff", domain=0, version=2):
    body = target + struct.pack(">BBBB", 1, 1, action, 0) + tlvs
    return struct.pack(">BBHBBHqI8sHHBb", 13, version, 34 + len(body), domain, 0, 0, 0, 0,
                       ME, 1, sequence, 4, 0x7F) + body


ME = bytes.fromhex("0a0b0cfffe0d0e0f")  # this peer, port 1


class Answer:
    """A parsed response: action, hops, and the TLVs as (type, id, data)."""

    def __init__(self, data):
        self.sequence = struct.unpack(">H", data[30:32])[0]
        self.target = data[34:44]
        self.hops = data[44]
        self.action = data[46] & 0x0F
        self.tlvs, at = [], 48
        while at + 6 <= len(data):
            kind, length = struct.unpack(">HH", data[at:at + 4])
            value = data[at + 4:at + 4 + length]
            key = struct.unpack(">H", value[2:4] if kind == 2 else value[0:2])[0]
            code = struct.unpack(">H", value[0:2])[0] if kind == 2 else None
            self.tlvs.append((kind, key, code, value))
            at += 4 + length

    def describe(self):
        if not self.tlvs:
            return "no TLV"
        kind, key, code, value = self.tlvs[0]
        if kind == 2:
            text = value[9:9 + value[8]] if len(value) > 8 else b""
            return "error %#06x for %#06x: %s" % (code, key, text.decode(errors="replace"))
        return "TLV %#06x %s" % (key, value[2:].hex())


class Peer:
    """Asks the victim (by default at all its ports) and hears its answers alone."""

    def __init__(self, address, victim):
        self.victim = victim
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.socket.bind((GROUP, GENERAL))
        self.socket.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP,
                               socket.inet_aton(GROUP) + socket.inet_aton(address))
        self.socket.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF,
                               socket.inet_aton(address))
        self.socket.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_LOOP, 0)
        self.sequence = 0
        self.failures = 0

    def send(self, action, tlvs, **fields):
        fields.setdefault("target", self.victim + b"\xff\xff")
        self.sequence = (self.sequence + 1) & 0xFFFF
        self.socket.sendto(request(self.sequence, action, tlvs, **fields), (GROUP, GENERAL))
        return self.sequence

    def answers(self, wait):
        """Answers addressed to us within the next wait seconds."""
        deadline = time.monotonic() + wait
        while time.monotonic() < deadline:
            self.socket.settimeout(max(deadline - time.monotonic(), 0.001))
            try:
                data = self.socket.recv(2048)
            except socket.timeout:
                return
            if self.is_answer(data):
                yield Answer(data)

    def is_answer(self, data):
        return (len(data) >= 48 and data[0] & 0x0F == 13 and data[20:28] == self.victim and
                data[34:42] == ME)

    def ask(self, action, tlvs, wait=0.3, **fields):
        sequence = self.send(action, tlvs, **fields)
        for answer in self.answers(wait):
            if answer.sequence == sequence:
                return answer
        return None

    def check(self, what, good, detail):
        self.failures += 0 if good else 1
        print("%-52s %-60s %s" % (what, detail, "ok" if good else "FAIL"))


def sweep(peer, table):
    for management_id, name, offers, length in table:
        read = peer.ask(GET, tlv(management_id, smallest(management_id, length)))
        data = (read.tlvs[0][3][2:] if GET in offers and read and read.tlvs
                else smallest(management_id, length))
        for action in (GET, SET, COMMAND):
            answer = read if action == GET else peer.ask(action, tlv(management_id, data))
            refused = action not in offers or name.endswith("NON_VOLATILE_STORAGE")
            want = ACKNOWLEDGE if action == COMMAND else RESPONSE
            good = (answer is not None and answer.action == want and answer.tlvs != [] and
                    (answer.tlvs[0][0], answer.tlvs[0][1]) == (2 if refused else 1,
                                                               management_id) and
                    (not refused or answer.tlvs[0][2] == 6))
            peer.check("%s %s" % (("GET", "SET", "", "COMMAND")[action], name), good,
                       answer.describe() if answer else "no answer")
            if action == COMMAND and not refused:
                time.sleep(0.5)  # a port command reopens the network
    answer = peer.ask(COMMAND, tlv(0x200D))
    peer.check("COMMAND ENABLE_PORT again", answer is not None and answer.tlvs != [],
               answer.describe() if answer else "no answer")


def bad(peer):
    victim, p1 = peer.victim, tlv(0x2005, b"\x00\x00")
    other = bytes.fromhex("0102030405060708")
    cases = [  # what, action, TLVs, fields, expected answer (None: none)
        ("GET with lengthField 2 and no data", GET, tlv(0x2005), {}, "no TLV"),
        ("GET cut inside the TLV header", GET, p1[:3], {}, "no TLV"),
        ("GET with lengthField 40 for 2 octets", GET, tlv(0x2005, b"\0\0", 40), {}, "TLV 0x2005"),
        ("GET of an unknown managementId", GET, tlv(0x2014, b"\0\0"), {}, "no TLV"),
        ("GET of a vendor managementId", GET, tlv(0xC000, b"\0" * 8), {}, "no TLV"),
        ("COMMAND to PRIORITY1", COMMAND, p1, {}, "error 0x0006"),
        ("SET of DEFAULT_DATA_SET", SET, tlv(0x2000, bytes(20)), {}, "error 0x0006"),
        ("SET clockAccuracy 0x32", SET, tlv(0x2010, b"\x32\0"), {}, "error 0x0004"),
        ("SET delayMechanism 0", SET, tlv(0x6000, b"\0\0"), {}, "error 0x0004"),
        ("SET timeSource 0x70", SET, tlv(0x2013, b"\x08\x70"), {}, "error 0x0004"),
        ("COMMAND INITIALIZE with key 1", COMMAND, tlv(0x0005, b"\0\x01"), {}, "error 0x0004"),
        ("SET a user description of 200 characters", SET,
         tlv(0x0002, b"\xc8" + b"x" * 200 + b"\0"), {}, "error 0xfffe"),
        ("GET to all clocks, all ports", GET, p1, {"target": ONES + b"\xff\xff"}, "TLV 0x2005"),
        ("GET to all clocks, port 1", GET, p1, {"target": ONES + b"\0\x01"}, "TLV 0x2005"),
        ("GET to this clock, all ports", GET, p1, {"target": victim + b"\xff\xff"}, "TLV 0x2005"),
        ("GET to another clock", GET, p1, {"target": other + b"\xff\xff"}, None),
        ("GET to port 0", GET, p1, {"target": victim + b"\0\0"}, None),
        ("GET to port 2", GET, p1, {"target": victim + b"\0\x02"}, None),
        ("GET in another domain", GET, p1, {"domain": 9}, None),
        ("GET of PTP version 1", GET, p1, {"version": 1}, None),
        ("RESPONSE sent to the clock", RESPONSE, p1, {}, None),
        ("ACKNOWLEDGE sent to the clock", ACKNOWLEDGE, p1, {}, None),
        ("action 5", 5, p1, {}, None),
        ("action 15", 15, p1, {}, None),
    ]
    for what, action, tlvs, fields, expected in cases:
        answer = peer.ask(action, tlvs, **fields)
        text = answer.describe() if answer else "no answer"
        peer.check(what, (answer is None) if expected is None else text.startswith(expected), text)
    # The body cut short, and a hops count that wraps: 1 - 2 is 255.
    peer.socket.sendto(request(7, GET, p1)[:40], (GROUP, GENERAL))
    peer.check("a body cut short", next(peer.answers(0.3), None) is None, "")
    data = bytearray(request(8, GET, p1))
    data[44:46] = b"\x01\x02"
    peer.socket.sendto(bytes(data), (GROUP, GENERAL))
    answer = next(peer.answers(0.3), None)
    peer.check("startingBoundaryHops 1, boundaryHops 2", answer and answer.hops == 255,
               "startingBoundaryHops %s" % (answer.hops if answer else "-"))


def flood(peer, table, rate, seconds):
    readable = [tlv(i, smallest(i, n)) for i, _, offers, n in table if GET in offers]
    answered, sent, start = set(), 0, time.monotonic()
    peer.socket.setblocking(False)
    while time.monotonic() - start < seconds:
        if sent < (time.monotonic() - start) * rate:
            answered.discard(peer.send(GET, readable[sent % len(readable)]))
            sent += 1
        try:
            data = peer.socket.recv(2048)
            if peer.is_answer(data):
                answered.add(Answer(data).sequence)
        except BlockingIOError:
            time.sleep(0.0002)
    answered.update(a.sequence for a in peer.answers(0.5))
    peer.check("flood of %d requests in %g s" % (sent, seconds), len(answered) >= sent,
               "answered %d" % len(answered))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("command", choices=("sweep", "set", "bad", "flood"))
    parser.add_argument("arguments", nargs="*")
    parser.add_argument("--address", required=True)
    parser.add_argument("--victim-identity", required=True)
    parser.add_argument("--identity", help="the requester's clock identity (port 1)")
    parser.add_argument("--table", required=True, help="tManagementIds.def")
    parser.add_argument("--rate", type=float, default=1000)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--domain", type=int, default=0)
    a = parser.parse_args()
    global ME
    ME = bytes.fromhex(a.identity) if a.identity else ME
    table, peer = read_table(a.table), Peer(a.address, bytes.fromhex(a.victim_identity))
    if a.command == "sweep":
        sweep(peer, table)
    elif a.command == "set":
        ids = {name: i for i, name, _, _ in table}
        answer = peer.ask(SET, tlv(ids[a.arguments[0]], bytes.fromhex(a.arguments[1])),
                          domain=a.domain)
        peer.check("SET %s %s" % tuple(a.arguments), answer is not None and answer.tlvs != []
                   and answer.tlvs[0][0] == 1, answer.describe() if answer else "no answer")
    elif a.command == "bad":
        bad(peer)
    else:
        flood(peer, table, a.rate, a.seconds)
    return 1 if peer.failures else 0


if __name__ == "__main__":
    sys.exit(main())
