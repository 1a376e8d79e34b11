#!/usr/bin/env python3
"""A PTP master made of hand-built datagrams, for the padding test.

It announces itself as a better master than any default clock (priority1 1),
sends two-step Sync and Follow_Up messages and answers Delay_Req messages
with Delay_Resp, all over UDP/IPv4 multicast on the device with the given
address. While the file named by --plain-flag does not exist, every message
it sends has bit 0x10 set in its first byte (the low bit of
transportSpecific), which asks its peers for event messages of the old fixed
size of 124 bytes; once the file exists, the bit is clear.

For each Delay_Req from another clock it prints one line, flushed at once:
    delay_req length=<datagram bytes> peer=<legacy|plain> sequence=<id>
where peer tells whether this master was setting the bit at that moment.
"""

import argparse
import os
import select
import socket
import struct
import sys
import time

GROUP = "224.0.1.129"
EVENT_PORT = 319
GENERAL_PORT = 320
LEGACY_FLAG = 0x10

SYNC, DELAY_REQ, FOLLOW_UP, DELAY_RESP, ANNOUNCE = 0x0, 0x1, 0x8, 0x9, 0xB
CONTROL = {SYNC: 0, DELAY_REQ: 1, FOLLOW_UP: 2, DELAY_RESP: 3, ANNOUNCE: 5}
TWO_STEP = 0x0200


def timestamp(nanoseconds):
    """The 10-byte wire timestamp: 48-bit seconds, 32-bit nanoseconds."""
    seconds, fraction = divmod(nanoseconds, 1_000_000_000)
    return struct.pack(">HIL", seconds >> 32, seconds & 0xFFFFFFFF, fraction)


def header(message_type, length, flags, identity, sequence, log_interval, legacy,
           correction=0):
    first = message_type | (LEGACY_FLAG if legacy else 0)
    return struct.pack(
        ">BBHBBHqI8sHHBb",
        first, 2, length, 0, 0, flags, correction, 0,
        identity, 1, sequence, CONTROL[message_type], log_interval)


class Peer:
    def __init__(self, address, identity, plain_flag):
        self.identity = identity
        self.plain_flag = plain_flag
        self.sequence = {SYNC: 0, ANNOUNCE: 0}
        self.send = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.send.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF,
                             socket.inet_aton(address))
        self.send.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_TTL, 1)
        self.send.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_LOOP, 0)
        self.receive = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.receive.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.receive.bind((GROUP, EVENT_PORT))
        membership = socket.inet_aton(GROUP) + socket.inet_aton(address)
        self.receive.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, membership)

    def legacy(self):
        return not os.path.exists(self.plain_flag)

    def emit(self, data, port):
        try:
            self.send.sendto(data, (GROUP, port))
        except OSError as error:
            # The other end's link may be down for a while; that is the test.
            print(f"send failed: {error}", file=sys.stderr, flush=True)

    def announce(self):
        sequence = self.next(ANNOUNCE)
        body = timestamp(0) + struct.pack(
            ">hBBBBHB8sHB",
            37, 0,            # currentUtcOffset, reserved
            1,                # grandmasterPriority1: better than any default
            6, 0x21, 0x4E5D,  # grandmasterClockQuality
            128,              # grandmasterPriority2
            self.identity, 0, 0xA0)
        self.emit(header(ANNOUNCE, 34 + len(body), 0, self.identity, sequence, -2,
                         self.legacy()) + body, GENERAL_PORT)

    def sync(self):
        sequence = self.next(SYNC)
        legacy = self.legacy()
        self.emit(header(SYNC, 44, TWO_STEP, self.identity, sequence, -3, legacy)
                  + timestamp(0), EVENT_PORT)
        sent = time.time_ns()
        self.emit(header(FOLLOW_UP, 44, 0, self.identity, sequence, -3, legacy)
                  + timestamp(sent), GENERAL_PORT)

    def answer(self, data, received):
        """Prints and answers a Delay_Req from another clock."""
        if len(data) < 44 or data[0] & 0x0F != DELAY_REQ:
            return
        requester = data[20:30]
        if requester[:8] == self.identity:
            return
        legacy = self.legacy()
        sequence = struct.unpack(">H", data[30:32])[0]
        correction = struct.unpack(">q", data[8:16])[0]
        print(f"delay_req length={len(data)} peer={'legacy' if legacy else 'plain'} "
              f"sequence={sequence}", flush=True)
        self.emit(header(DELAY_RESP, 54, 0, self.identity, sequence, -3, legacy,
                         correction) + timestamp(received) + requester, GENERAL_PORT)

    def next(self, message_type):
        sequence = self.sequence[message_type]
        self.sequence[message_type] = (sequence + 1) & 0xFFFF
        return sequence

    def run(self, duration):
        start = time.monotonic()
        next_sync = next_announce = start
        while time.monotonic() - start < duration:
            now = time.monotonic()
            if now >= next_announce:
                self.announce()
                next_announce += 0.25
            if now >= next_sync:
                self.sync()
                next_sync += 0.125
            wait = max(0.0, min(next_sync, next_announce) - time.monotonic())
            ready, _, _ = select.select([self.receive], [], [], wait)
            if ready:
                data = self.receive.recv(2048)
                self.answer(data, time.time_ns())


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--address", required=True, help="IPv4 address of the device")
    parser.add_argument("--identity", required=True, help="clock identity, 16 hex digits")
    parser.add_argument("--plain-flag", required=True, help="file whose existence clears the bit")
    parser.add_argument("--duration", type=float, required=True, help="seconds to run")
    arguments = parser.parse_args()
    identity = bytes.fromhex(arguments.identity)
    if len(identity) != 8:
        parser.error("the clock identity has 8 bytes")
    Peer(arguments.address, identity, arguments.plain_flag).run(arguments.duration)
    return 0


if __name__ == "__main__":
    sys.exit(main())
