"""Packets per second decoded into Python objects.

The workload is the native benchmarks' event list (bench/Workloads.h): one
reply of body 0x4d carrying 64 events of codes 0x04, 0x13 and 0x52 in turn,
each with a 4-byte string. The same stream of packets is decoded three ways:

  trovcodec    trovcodec.decode(stream): the packet objects, through the library;
  struct       a hand-written parser of exactly this list with struct.unpack_from,
               making the same dicts (checked equal before timing);
  trov tool    `trov decode --raw --ndjson` of the stream (its JSON text), and the
               same followed by json.loads of every line.

Usage: bench_decode.py [--trov PATH] [--packets N] [--repeat R]
Prints one table; the medians of R runs. "vs struct" compares like with like:
decode and the tool with the parser making a list, iter_decode with the
parser as a generator.
"""

import argparse
import gc
import json
import marshal
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time

import trovcodec

EVENTS = 64
CODES = (0x04, 0x13, 0x52)


def u16(v):
    return struct.pack(">H", v & 0xFFFF)


def u32(v):
    return struct.pack(">I", v & 0xFFFFFFFF)


def event_list_packet():
    """bench/Workloads.h's longEventList(), byte for byte."""
    body = u32(0x11223344) + bytes([5]) + u16(0x0606) + u16(0x0707) + bytes([8]) + u16(EVENTS)
    for i in range(EVENTS):
        code = CODES[i % 3]
        text = bytes([ord("e"), ord("v"), ord("0") + i // 10, ord("0") + i % 10])
        value0 = (i & 0xFF) if code == 0x04 else 0x00ABCDEF + i
        body += u16(0x100 + i) + u32(0x01000000 + i * 977) + u32(0x20000000 + i * 31) + bytes([i & 0xFF])
        body += u16(code)
        body += bytes([value0]) if code == 0x04 else u32(value0)
        if code == 0x52:
            body += u32(0x7F000000 ^ i)
        body += bytes([len(text)]) + text
    header = struct.pack(">HBBHHHIIH", 0xA7E5, 0x10, 1, 0x4D, 7, len(body), 0x01020304, 0x05060708, 1)
    return header + body


# ---- the hand-written parser ------------------------------------------------------

HEADER = struct.Struct(">HBBHHHIIH")
HEAD = struct.Struct(">IBHHBH")
EVENT_HEAD = struct.Struct(">HIIBH")
U8 = struct.Struct(">B")
U32 = struct.Struct(">I")
U32U32 = struct.Struct(">II")


def parse_struct(data):
    """The packet objects of a stream of event-list replies (this workload only)."""
    return list(iter_struct(data))


def iter_struct(data):
    """As parse_struct(), one packet object at a time."""
    at = 0
    while at + 20 <= len(data):
        mark, version, flags, code, value4, length, value6, value7, extension = HEADER.unpack_from(data, at)
        b = at + 20
        value0, value1, value2, value3, value4b, count = HEAD.unpack_from(data, b)
        b += HEAD.size
        events = []
        for _ in range(count):
            field1, field2, field3, field4, ecode = EVENT_HEAD.unpack_from(data, b)
            b += EVENT_HEAD.size
            if ecode == 0x04:
                (v0,) = U8.unpack_from(data, b)
                b += 1
                fields = {"value0": v0}
                name = "string1"
            elif ecode == 0x13:
                (v0,) = U32.unpack_from(data, b)
                b += 4
                fields = {"value0": v0}
                name = "string1"
            else:
                v0, v1 = U32U32.unpack_from(data, b)
                b += 8
                fields = {"value0": v0, "value1": v1}
                name = "string2"
            n = data[b]
            fields[name] = data[b + 1:b + 1 + n].hex()
            b += 1 + n
            events.append({"code": ecode, "field1": field1, "field2": field2, "field3": field3,
                           "field4": field4, "fields": fields})
        yield {
            "offset": at, "length": 20 + length, "direction": "reply",
            "header": {"mark": mark, "version": version, "flags": flags, "code": code, "value4": value4,
                       "bodyLength": length, "value6": value6, "value7": value7, "extension": extension},
            "unitType": extension,
            "body": {"status": "decoded", "layout": "EventListBody",
                     "fields": {"value0": value0, "value1": value1, "value2": value2, "value3": value3,
                                "value4": value4b, "count": count, "events": events}},
        }
        at += 20 + length


def best_of(repeat, run):
    times = []
    for _ in range(repeat):
        start = time.perf_counter()
        run()
        times.append(time.perf_counter() - start)
    return statistics.median(times)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--trov", default=shutil.which("trov"), help="the trov tool (default: on PATH)")
    parser.add_argument("--packets", type=int, default=2000)
    parser.add_argument("--repeat", type=int, default=5)
    args = parser.parse_args()

    packet = event_list_packet()
    stream = packet * args.packets
    expected = trovcodec.decode(stream, format="raw")
    assert expected[0]["body"]["status"] == "decoded", expected[0]
    assert parse_struct(stream) == expected, "the struct parser does not make the library's objects"

    # A list of every packet object (decode), and one object at a time
    # (iter_decode: each dropped before the next is made), each way.
    rows = [("trovcodec.decode", best_of(args.repeat, lambda: trovcodec.decode(stream, format="raw"))),
            ("struct.unpack parser", best_of(args.repeat, lambda: parse_struct(stream))),
            ("trovcodec.iter_decode", best_of(args.repeat, lambda: sum(1 for _ in trovcodec.iter_decode(stream)))),
            ("struct.unpack generator", best_of(args.repeat, lambda: sum(1 for _ in iter_struct(stream))))]
    if args.trov:
        with tempfile.NamedTemporaryFile(suffix=".bin") as f:
            f.write(stream)
            f.flush()
            command = [args.trov, "decode", "--raw", "--ndjson", f.name]
            lines = subprocess.run(command, capture_output=True, check=True).stdout.splitlines()
            assert [json.loads(line) for line in lines] == expected, "the tool's objects differ"
            rows.append(("trov tool (JSON text)",
                         best_of(args.repeat, lambda: subprocess.run(command, capture_output=True, check=True))))
            rows.append(("trov tool + json.loads", best_of(args.repeat, lambda: [
                json.loads(line) for line in subprocess.run(command, capture_output=True, check=True).stdout
                .splitlines()])))
    # The floor: only making the same objects, from the fastest serialised
    # form Python has (marshal, in C), with the collector paused as decode
    # pauses it.
    frozen = marshal.dumps(expected)

    def floor():
        gc.disable()
        try:
            marshal.loads(frozen)
        finally:
            gc.enable()
    rows.append(("floor: marshal.loads", best_of(args.repeat, floor)))

    print(f"{args.packets} event-list replies of {len(packet)} bytes ({EVENTS} events each), "
          f"median of {args.repeat} runs")
    print(f"{'decoder':26} {'packets/s':>11} {'us/packet':>10} {'MB/s':>7} {'vs struct':>10}")
    times = dict(rows)
    for name, seconds in rows:
        one_at_a_time = "iter_decode" in name or "generator" in name
        struct_time = times["struct.unpack generator" if one_at_a_time else "struct.unpack parser"]
        per = seconds / args.packets
        print(f"{name:26} {args.packets / seconds:11.0f} {per * 1e6:10.1f} "
              f"{len(stream) / seconds / 1e6:7.1f} {struct_time / seconds:9.2f}x")
    return 0


if __name__ == "__main__":
    sys.exit(main())
