#!/usr/bin/env python3
"""A hostile PTP peer: crafted datagrams at the PTP ports, for the fault test.

One run sends one phase of attack to the PTP multicast group from the device
with the given address, and meanwhile counts, in one-second slots, what the
victim (the clock with the given address) sends, by messageType. It prints
    cases <phase> <distinct crafted datagrams> datagrams=<sent> seconds=<s>
    victim <type> total=<n> peak=<most in one second>
Phases:
  fields    every header field at its extremes, on every message type, and
            the body fields at theirs (Announce, timestamps, Delay_Resp);
  frames    every truncation of every message type, oversized and random
            datagrams, and TLV suffixes that run past the end, come in
            hundreds, or name unknown organisations;
  stray     Sync and Follow_Up from a clock that is not the victim's master:
            each of the master's Sync messages is shadowed by Sync and
            Follow_Up messages that carry its successor's sequenceId, duplicates
            and mismatched sequenceIds;
  spoof     the same games under the master's own identity (out of order,
            duplicated, mismatched, timestamps at their extremes), answers to
            the victim's Delay_Req ahead of the master's, Delay_Resp messages
            to the victim with logMessageInterval -128 and 127;
  listen    nothing sent; the victim's messages counted for --seconds;
  flood-event
            Sync messages of --identities strangers at the event port, as
            fast as this process can send them, for --seconds;
  flood-better, flood-worse
            Announce messages from --identities distinct clocks, better than
            any default clock (priority1 0) or worse (255), round-robin, as
            fast as can be, for --seconds.
Every crafted message comes from a fresh clock identity unless the identity
is what the case varies, so that no single Announce of the field phases can
qualify its sender as a foreign master.
"""

import argparse
import random
import select
import socket
import struct
import sys
import threading
import time

GROUP = "224.0.1.129"
EVENT, GENERAL = 319, 320
SYNC, DELAY_REQ, FOLLOW_UP, DELAY_RESP, ANNOUNCE, SIGNALING, MANAGEMENT = 0, 1, 8, 9, 11, 12, 13
NAMES = {SYNC: "Sync", DELAY_REQ: "Delay_Req", FOLLOW_UP: "Follow_Up", DELAY_RESP: "Delay_Resp",
         ANNOUNCE: "Announce", SIGNALING: "Signaling", MANAGEMENT: "Management"}
CONTROL = {SYNC: 0, DELAY_REQ: 1, FOLLOW_UP: 2, DELAY_RESP: 3, MANAGEMENT: 4}
TYPES = (SYNC, DELAY_REQ, FOLLOW_UP, DELAY_RESP, ANNOUNCE, SIGNALING, MANAGEMENT)
TWO_STEP = 0x0200
ZEROS, ONES = bytes(8), b"\xff" * 8
LXI, ORV = 0x0021D6, 0x00A0C5
# The kernel's receive time of each datagram (Linux): the counts stay right
# when this process falls behind under its own flood.
SO_TIMESTAMP = getattr(socket, "SO_TIMESTAMP", 29)
TIMEVAL = struct.Struct("@ll")


def port_of(message_type):
    return EVENT if message_type < 8 else GENERAL


def timestamp(seconds=0, nanoseconds=0):
    return struct.pack(">HIL", seconds >> 32, seconds & 0xFFFFFFFF, nanoseconds)


def header(message_type, body_length, identity, **f):
    """The 34-byte header; keyword arguments override single fields."""
    return struct.pack(
        ">BBHBBHqI8sHHBb",
        f.get("transport", 0) << 4 | message_type, f.get("version", 2),
        f.get("length", 34 + body_length) & 0xFFFF, f.get("domain", 0), 0, f.get("flags", 0),
        f.get("correction", 0), 0, identity, f.get("port", 1), f.get("sequence", 0) & 0xFFFF,
        f.get("control", CONTROL.get(message_type, 5)), f.get("log", 0))


def announce_body(**f):
    return (f.get("origin", timestamp(1)) + struct.pack(
        ">hBBBBHB8sHB", f.get("utc", 37), 0, f.get("priority1", 255), f.get("clock_class", 255),
        f.get("accuracy", 0xFE), f.get("variance", 0xFFFF), f.get("priority2", 255),
        f.get("grandmaster", ZEROS), f.get("steps", 0), f.get("source", 0xA0)))


def body(message_type, **f):
    """A well-formed body of each type, with the given fields."""
    if message_type == ANNOUNCE:
        return announce_body(**f)
    origin = f.get("origin", timestamp(1))
    if message_type == DELAY_RESP:
        return origin + f.get("requester", ONES + b"\xff\xff")
    if message_type in (SIGNALING, MANAGEMENT):
        target = ONES + b"\xff\xff"
        # Management: boundary hops, GET, and a NULL_MANAGEMENT TLV.
        return target + (b"\x01\x01\x00\x00" + struct.pack(">HHH", 1, 2, 0x2000)
                         if message_type == MANAGEMENT else b"")
    return origin


def tlv(tlv_type, value, length=None):
    return struct.pack(">HH", tlv_type, len(value) if length is None else length) + value


def organisation(organisation_id, subtype, data=b"", length=None):
    ids = organisation_id.to_bytes(3, "big") + subtype.to_bytes(3, "big")
    return tlv(3, ids + data, length)


class Peer:
    def __init__(self, arguments):
        self.a = arguments
        self.victim_address = arguments.victim_address
        self.master_address = arguments.master_address
        self.counter = 0
        self.cases = 0
        self.datagrams = 0
        self.random = random.Random(1588)
        self.send_socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.send_socket.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF,
                                    socket.inet_aton(arguments.address))
        self.send_socket.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_LOOP, 0)
        self.send_socket.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 1 << 20)
        self.receivers = []
        for port in (EVENT, GENERAL):
            receiver = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
            receiver.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            receiver.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
            receiver.setsockopt(socket.SOL_SOCKET, SO_TIMESTAMP, 1)
            receiver.bind((GROUP, port))
            receiver.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP,
                                socket.inet_aton(GROUP) + socket.inet_aton(arguments.address))
            self.receivers.append(receiver)
        self.slots = {}  # (type, second) -> count of the victim's datagrams
        self.master_syncs = []  # sequenceIds of the master's Sync messages, in order
        self.victim_requests = []  # sequenceIds of the victim's Delay_Req messages
        self.lock = threading.Lock()
        self.running = True
        self.start = time.monotonic()
        self.start_realtime = time.time()

    def fresh(self):
        """A clock identity nobody else has."""
        self.counter += 1
        return bytes.fromhex("0266ff") + b"\xff\xfe" + self.counter.to_bytes(3, "big")

    def emit(self, data, port, case=True):
        self.cases += case
        self.datagrams += 1
        try:
            self.send_socket.sendto(data, (GROUP, port))
        except OSError:
            # A full send buffer under a flood: the datagram is lost, no more.
            time.sleep(0.0005)

    def message(self, message_type, identity=None, suffix=b"", body_fields=None, **fields):
        data = body(message_type, **(body_fields or {})) + suffix
        return header(message_type, len(data), identity or self.fresh(), **fields) + data

    # ---- listening ----

    def listen(self):
        while self.running:
            ready, _, _ = select.select(self.receivers, [], [], 0.05)
            for receiver in ready:
                data, ancillary, _, (source, _) = receiver.recvmsg(2048, 64)
                if not data:
                    continue
                kind = data[0] & 0x0F
                if source == self.victim_address:
                    arrival = time.time()
                    for level, kind_of_data, value in ancillary:
                        if level == socket.SOL_SOCKET and kind_of_data == SO_TIMESTAMP:
                            seconds, microseconds = TIMEVAL.unpack(value[:TIMEVAL.size])
                            arrival = seconds + microseconds * 1e-6
                    key = (kind, int(arrival - self.start_realtime))
                    with self.lock:
                        self.slots[key] = self.slots.get(key, 0) + 1
                        if kind == DELAY_REQ and len(data) >= 44:
                            self.victim_requests.append(struct.unpack(">H", data[30:32])[0])
                elif source == self.master_address and kind == SYNC and len(data) >= 44:
                    with self.lock:
                        self.master_syncs.append(struct.unpack(">H", data[30:32])[0])

    def report(self, phase):
        seconds = time.monotonic() - self.start
        print(f"cases {phase} {self.cases} datagrams={self.datagrams} seconds={seconds:.1f}")
        totals, peaks = {}, {}
        with self.lock:
            for (kind, _), count in self.slots.items():
                totals[kind] = totals.get(kind, 0) + count
                peaks[kind] = max(peaks.get(kind, 0), count)
        for kind in sorted(totals):
            print(f"victim {NAMES.get(kind, kind)} total={totals[kind]} peak={peaks[kind]}")

    # ---- phases ----

    def fields(self):
        victim = bytes.fromhex(self.a.victim)
        variants = [("transport", v) for v in (1, 8, 15)]
        variants += [("version", v) for v in (0, 1, 3, 15, 0x12, 0xF2)]
        variants += [("length", v) for v in (0, 1, 33, 34, 43, 0x7FFF, 0xFFFF)]
        variants += [("domain", v) for v in (1, 127, 128, 255)]
        variants += [("flags", 1 << bit) for bit in range(16)] + [("flags", 0xFFFF)]
        variants += [("correction", v) for v in (2**63 - 1, -2**63, -1, 1)]
        variants += [("sequence", v) for v in (0, 1, 0x7FFF, 0x8000, 0xFFFE, 0xFFFF)]
        variants += [("control", v) for v in (0, 1, 2, 3, 4, 5, 6, 0x7F, 0xFF)]
        variants += [("log", v) for v in (-128, -10, -7, 0, 7, 22, 127)]
        for message_type in TYPES:
            for name, value in variants:
                self.emit(self.message(message_type, **{name: value}), port_of(message_type))
            for identity, port in ((victim, 1), (victim, 2), (victim, 0xFFFF), (ZEROS, 0),
                                   (ZEROS, 1), (ONES, 0xFFFF), (ONES, 1)):
                self.emit(self.message(message_type, identity, port=port), port_of(message_type))
        # Every messageType with a well-formed-looking body, at both ports.
        for message_type in range(16):
            for port in (EVENT, GENERAL):
                self.emit(header(message_type, 30, self.fresh()) + announce_body(), port)
        announce = [("steps", v) for v in (0, 254, 255, 0xFFFF)]
        announce += [(f, v) for f in ("priority1", "priority2", "clock_class", "accuracy",
                                      "source") for v in (0, 1, 0x7F, 0xFE, 0xFF)]
        announce += [("variance", v) for v in (0, 0x8000, 0xFFFF)]
        announce += [("utc", v) for v in (-32768, -1, 0, 32767)]
        announce += [("grandmaster", v) for v in (victim, ZEROS, ONES)]
        for name, value in announce:
            self.emit(self.message(ANNOUNCE, body_fields={name: value}), GENERAL)
        extremes = [timestamp(2**48 - 1, 0), timestamp(0, 999_999_999), timestamp(1, 10**9),
                    timestamp(2**48 - 1, 0xFFFFFFFF), timestamp(0, 0)]
        for message_type in (SYNC, DELAY_REQ, FOLLOW_UP, DELAY_RESP, ANNOUNCE):
            for origin in extremes:
                for flags in (0, TWO_STEP):
                    self.emit(self.message(message_type, body_fields={"origin": origin},
                                           flags=flags), port_of(message_type))
        # Delay_Resp for other requesters, and from clocks that are not the
        # master, with extreme logMessageInterval values.
        master = bytes.fromhex(self.a.master)
        requesters = [self.fresh() + b"\x00\x01", ZEROS + b"\x00\x00", ONES + b"\xff\xff",
                      master + b"\x00\x01", victim + b"\x00\x02", victim + b"\x00\x01"]
        for requester in requesters:
            for log in (-128, -10, 0, 127):
                for sequence in (0, 0xFFFF):
                    self.emit(self.message(DELAY_RESP, body_fields={"requester": requester},
                                           log=log, sequence=sequence), GENERAL)
                    if requester[:8] != victim or requester[8:] != b"\x00\x01":
                        self.emit(self.message(DELAY_RESP, master,
                                               body_fields={"requester": requester},
                                               log=log, sequence=sequence), GENERAL)

    def frames(self):
        suffixes = [b"", organisation(LXI, 0xFFFFFF, b"abcd")]
        for message_type in TYPES:
            for suffix in suffixes:
                full = self.message(message_type, suffix=suffix)
                for length in range(len(full) + 1):
                    self.emit(full[:length], port_of(message_type))
        # Oversized: a valid message, then zeros or noise up to the largest
        # UDP datagram.
        for message_type in (SYNC, ANNOUNCE, DELAY_RESP, SIGNALING):
            for size in (125, 1023, 1024, 1025, 1500, 9000, 65507):
                full = self.message(message_type)
                for fill in (bytes(size - len(full)), self.random.randbytes(size - len(full))):
                    self.emit(full + fill, port_of(message_type))
        # Random bytes, and random bytes behind a plausible first two bytes.
        for index in range(3000):
            data = bytearray(self.random.randbytes(self.random.randrange(0, 1100)))
            if index % 2 and len(data) >= 5:
                data[0] = self.random.choice(TYPES)
                data[1], data[4] = 2, 0
            self.emit(bytes(data), (EVENT, GENERAL)[index % 4 < 2])
        # TLV suffixes.
        unknown = [tlv(0x7FFF, b"", 0xFFFF), tlv(0x7FFF, b"abc", 4), tlv(0, b"", 1),
                   tlv(1, b"\x00\x01", 0xFFFF), tlv(2, b"\x00", 0x10), tlv(3, b"\x00\x21", 0xFFFF),
                   organisation(LXI, 0xFFFFFF, b"", 5), organisation(LXI, 0xFFFFFF, b"", 0),
                   organisation(LXI, 0xFFFFFF, b"xy", 0xFFFF), organisation(LXI, 1, b"data"),
                   organisation(ORV, 0xABCDEF, b"data"), organisation(0x123456, 0, b"data"),
                   tlv(0x7FFF, b"", 0) * 240, organisation(LXI, 0xFFFFFF, b"") * 98,
                   tlv(0x7FFF, b"\x00" * 4) * 120 + organisation(LXI, 0xFFFFFF, b"end")]
        for message_type in (SYNC, FOLLOW_UP, DELAY_RESP, ANNOUNCE, SIGNALING):
            for suffix in unknown:
                self.emit(self.message(message_type, suffix=suffix), port_of(message_type))
        # Unknown organisations, each of which the clock names in its trace:
        # a datagram holds up to 98 of them.
        warnings = (organisation(0x123456, 0) + organisation(LXI, 2) + organisation(ORV, 3)) * 33
        for _ in range(self.a.trace_datagrams):
            self.emit(self.message(SIGNALING, suffix=warnings), GENERAL, case=False)
        self.cases += 1

    def master_sync_after(self, seen):
        """Waits for the master's next Sync; its sequenceId, or None."""
        deadline = time.monotonic() + 1.0
        while time.monotonic() < deadline:
            with self.lock:
                if len(self.master_syncs) > seen:
                    return self.master_syncs[seen]
            time.sleep(0.001)
        return None

    def sequence_games(self, identity, rounds):
        """Around each of the master's Sync messages, Sync and Follow_Up
        messages under the given identity: its successor ahead of time,
        duplicates, mismatches, out of order."""
        stray = self.fresh() if identity is None else identity
        seen = len(self.master_syncs)
        extremes = [timestamp(2**48 - 1, 0xFFFFFFFF), timestamp(0, 10**9), timestamp(0, 0),
                    timestamp(2**48 - 1, 999_999_999)]
        for round_ in range(rounds):
            sequence = self.master_sync_after(seen)
            if sequence is None:
                continue
            seen += 1
            wild = (extremes + [timestamp(self.random.randrange(2**48),
                                          self.random.randrange(10**9))])[round_ % 5]
            games = [
                (SYNC, sequence + 1, TWO_STEP), (FOLLOW_UP, sequence + 1, 0),
                (SYNC, sequence, TWO_STEP), (FOLLOW_UP, sequence, 0), (FOLLOW_UP, sequence, 0),
                (FOLLOW_UP, sequence - 1, 0), (SYNC, sequence + 1, 0), (SYNC, sequence + 2, 0),
                (FOLLOW_UP, sequence + 0x8000, 0), (SYNC, sequence - 1, TWO_STEP)]
            message_type, offset_sequence, flags = games[round_ % len(games)]
            self.emit(self.message(message_type, stray, flags=flags, sequence=offset_sequence,
                                   body_fields={"origin": wild}), port_of(message_type))
            if identity is None:
                # Shadows always: a Sync with the next sequenceId waits in
                # front of the master's.
                self.emit(self.message(SYNC, stray, flags=TWO_STEP, sequence=sequence + 1,
                                       body_fields={"origin": wild}), EVENT)
            else:
                # Answers the victim's last Delay_Req before the master does.
                with self.lock:
                    request = self.victim_requests[-1] if self.victim_requests else 0
                requester = bytes.fromhex(self.a.victim) + b"\x00\x01"
                self.emit(self.message(DELAY_RESP, stray, sequence=request, body_fields={
                    "origin": wild, "requester": requester}), GENERAL)

    def stray(self):
        self.sequence_games(None, self.a.rounds)

    def spoof(self):
        master = bytes.fromhex(self.a.master)
        victim = bytes.fromhex(self.a.victim) + b"\x00\x01"
        self.sequence_games(master, self.a.rounds)
        # The master's voice asks for Delay_Req messages as fast as can be,
        # for a second, then as slow as can be.
        for log in (-128, 127):
            self.cases += 1
            end = time.monotonic() + 1.0
            while time.monotonic() < end:
                self.emit(self.message(DELAY_RESP, master, body_fields={"requester": victim},
                                       log=log, sequence=0xFFFF), GENERAL, case=False)
                time.sleep(0.002)

    def flood(self, templates, port):
        self.cases += len(templates)
        end = time.monotonic() + self.a.seconds
        while time.monotonic() < end:
            for data in templates:
                self.emit(data, port, case=False)
                if self.datagrams % 256 == 0 and time.monotonic() >= end:
                    break

    def announce_flood(self, priority):
        self.flood([header(ANNOUNCE, 30, identity, log=-2) + announce_body(
            priority1=priority, clock_class=priority, grandmaster=identity)
            for identity in (self.fresh() for _ in range(self.a.identities))], GENERAL)

    def event_flood(self):
        """Sync messages of strangers at the event port, as fast as can be."""
        self.flood([self.message(SYNC, flags=TWO_STEP, sequence=n)
                    for n in range(self.a.identities)], EVENT)

    def run(self, phase):
        listener = threading.Thread(target=self.listen, daemon=True)
        listener.start()
        if phase == "listen":
            time.sleep(self.a.seconds)
        elif phase == "flood-event":
            self.event_flood()
        elif phase.startswith("flood-"):
            self.announce_flood(0 if phase == "flood-better" else 255)
        else:
            getattr(self, phase)()
        time.sleep(0.3)  # what the victim answers late is counted too
        self.running = False
        listener.join()
        self.report(phase)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--address", required=True, help="IPv4 address of our device")
    parser.add_argument("--victim", required=True, help="victim's clock identity, 16 hex digits")
    parser.add_argument("--victim-address", required=True, help="victim's IPv4 address")
    parser.add_argument("--master", required=True, help="master's clock identity, 16 hex digits")
    parser.add_argument("--master-address", required=True, help="master's IPv4 address")
    parser.add_argument("--phase", required=True, choices=(
        "fields", "frames", "stray", "spoof", "listen", "flood-event", "flood-better",
        "flood-worse"))
    parser.add_argument("--rounds", type=int, default=40, help="master Sync messages to play on")
    parser.add_argument("--identities", type=int, default=70000, help="Announce senders")
    parser.add_argument("--seconds", type=float, default=5.0, help="flood or listening time")
    parser.add_argument("--trace-datagrams", type=int, default=200,
                        help="datagrams full of unknown organisations")
    Peer(parser.parse_args()).run(parser.parse_args().phase)
    return 0


if __name__ == "__main__":
    sys.exit(main())
