"""Bad input of every sort is refused cleanly: random bytes, wrong types,
huge counts, deep nesting, misbehaving file objects; and 10^5 calls leave
resident memory where it was."""

import io
import os
import random
import struct

import pytest
from hypothesis import given, strategies as st

import trovcodec

HEADER = struct.Struct(">HBBHHHII H")  # mark, version, flags, code, value4, bodyLength, value6, value7, ext


def header(code, body_length, unit_type=1, mark=0xA7E5, version=0x10, flags=1):
    return HEADER.pack(mark, version, flags, code, 0, body_length, 0, 0, unit_type)


def check_packet_object(packet):
    assert isinstance(packet["offset"], int)
    if "skipped" in packet:  # bytes that are not a packet
        assert len(packet["hex"]) == 2 * min(packet["skipped"], 4096)
        return
    assert packet["body"]["status"] in ("decoded", "skipped", "failed")
    if packet["body"]["status"] == "failed":
        assert set(packet["body"]["error"]) == {"result", "name", "meaning", "offset"}


@given(st.binary(max_size=600), st.booleans())
def test_random_bytes_decode_to_packet_objects(data, request):
    packets = trovcodec.decode(data, request=request, format="raw")
    for packet in packets:
        check_packet_object(packet)
    # Framing covers the input exactly.
    assert sum(p.get("length", p.get("trailing", p.get("skipped", 0))) for p in packets) == len(data)


@given(st.integers(0, 0xFFFF), st.binary(max_size=300), st.booleans(), st.integers(0, 8))
def test_random_bodies_behind_valid_headers(code, body, request, unit_type):
    packet = header(code, len(body), unit_type) + body
    [decoded] = trovcodec.decode(packet, request=request)
    check_packet_object(decoded)
    failed = decoded["body"]["status"] == "failed"
    try:
        assert trovcodec.decode(packet, request=request, strict=True) == [decoded]
        assert not failed
    except trovcodec.TrovError as error:
        assert failed and error.path_or_offset == decoded["body"]["error"]["offset"]
    if request and decoded["body"]["status"] == "decoded":
        # Whatever the request reader accepts encodes to the same bytes.
        assert trovcodec.encode(decoded) == packet


def test_bad_hex_and_unreadable_sources():
    with pytest.raises(ValueError, match="not a hex digit"):
        trovcodec.decode(b"A7E5 zz", format="hex")
    with pytest.raises(FileNotFoundError):
        trovcodec.decode("/nonexistent/capture.hex")
    with pytest.raises(IsADirectoryError):
        trovcodec.decode(os.path.dirname(__file__))
    with pytest.raises(TypeError):
        trovcodec.decode(12345)
    with pytest.raises(ValueError):
        trovcodec.decode(b"", format="binary")
    with pytest.raises(TypeError, match="binary mode"):
        trovcodec.decode(io.StringIO("a7e5"))

    class Broken(io.RawIOBase):
        def read(self, n=-1):
            raise OSError("the disk went away")

    with pytest.raises(OSError, match="the disk went away"):
        trovcodec.decode(Broken())


def test_file_object_in_small_pieces():
    """A file object that returns a few bytes at a time (a pipe) frames alike."""
    data = header(0x0B, 4) + bytes.fromhex("0001e240")
    data = data * 50

    class Trickle(io.RawIOBase):
        def __init__(self):
            self.at = 0

        def read(self, n=-1):
            piece = data[self.at:self.at + 7]
            self.at += len(piece)
            return piece

    assert trovcodec.decode(Trickle()) == trovcodec.decode(data)


BAD_PACKETS = [
    # (packet object, JSON pointer that encode names)
    ([], ""),
    ({"body": {}}, "/header"),
    ({"header": {"code": "eleven"}}, "/header/code"),
    ({"header": {"code": 0x0B, "mark": -1}, "body": {"fields": {"value0": 1}}}, "/header/mark"),
    ({"header": {"code": 0x0B}, "body": {"fields": {"value0": 2 ** 80}}}, "/body/fields/value0"),
    ({"header": {"code": 0x0B}, "body": {"fields": {"value0": 1.5}}}, "/body/fields/value0"),
    ({"header": {"code": 0x0B}, "body": {"fields": {"value0": None}}}, "/body/fields/value0"),
    ({"header": {"code": 0x0B}, "body": {"fields": {"value0": True}}}, "/body/fields/value0"),
    ({"header": {"code": 0x0B}, "body": {"fields": {"value0": b"\x01"}}}, "/body/fields/value0"),
    ({"header": {"code": 0x0B}, "body": {"fields": {"value0": object()}}}, "/body/fields/value0"),
    ({"header": {"code": 0x0B}, "body": {"fields": {"value0": 1, "extra": 2}}}, "/body/fields/extra"),
    ({"header": {"code": 0x0B}, "body": {"fields": {1: 2}}}, "/body/fields"),
    ({"header": {"code": 0x0B}, "body": {"fields": {"value0": "\ud800"}}}, "/body/fields/value0"),
    ({"header": {"code": 0x0B}, "body": "fields"}, "/body"),
    ({"header": {"code": 0x12}, "body": {"fields": {"id": {"id": 0xFFFF, "value": {}}}}}, "/body/fields/id/id"),
    # A count far beyond what the wire can carry.
    ({"header": {"code": 0x1D}, "body": {"fields": {"value0": 1, "method": 0x95,
                                                    "params": {"value0": 1, "array1": [1] * 100000,
                                                               "array2": []}}}},
     "/body/fields/params/array1"),
    ({"header": {"code": 0x1D}, "body": {"fields": {"value0": 1, "method": 0x2001, "params": "ab" * 70000}}},
     None),
    ({"header": {"code": 0x0B}, "body": {"status": "failed", "fields": {"value0": 1}}}, "/body/status"),
]


@pytest.mark.parametrize("packet,path", BAD_PACKETS, ids=range(len(BAD_PACKETS)))
def test_encode_refuses_with_a_path(packet, path):
    with pytest.raises(trovcodec.TrovError) as raised:
        trovcodec.encode(packet)
    error = raised.value
    assert isinstance(error.result, int) and error.name and error.meaning
    if path is not None:
        assert error.path_or_offset == path
    with pytest.raises(trovcodec.TrovError) as raised:
        trovcodec.encode_all([{"header": {"code": 0x0B}, "body": {"fields": {"value0": 1}}}, packet])
    if path is not None:
        assert raised.value.path_or_offset == "/1" + path


def nested(depth, leaf):
    value = leaf
    for _ in range(depth):
        value = {"value": value}
    return value


def test_deep_and_circular_values_are_refused():
    for depth in (40, 1000, 100000):
        with pytest.raises(trovcodec.TrovError):
            trovcodec.encode({"header": {"code": 0x12}, "body": {"fields": {"id": nested(depth, 1)}}})
    loop = []
    loop.append(loop)
    with pytest.raises(trovcodec.TrovError, match="nested deeper"):
        trovcodec.encode({"header": {"code": 0x0B}, "body": {"fields": {"value0": loop}}})


def test_iterator_used_after_its_end_and_from_its_own_source():
    data = header(0x0B, 4) + bytes.fromhex("0001e240")
    packets = trovcodec.iter_decode(data)
    assert len(list(packets)) == 1
    assert list(packets) == []

    class Reentrant(io.RawIOBase):
        """A file object that reads from the very iterator reading it."""
        def read(self, n=-1):
            next(self.iterator)
            return b""

    source = Reentrant()
    source.iterator = trovcodec.iter_decode(source)
    with pytest.raises(ValueError, match="already running"):
        next(source.iterator)


def resident_kib():
    with open("/proc/self/statm") as statm:
        return int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE") // 1024


@pytest.mark.skipif(not os.path.exists("/proc/self/statm"), reason="needs /proc")
def test_many_calls_keep_memory_flat():
    rng = random.Random(7)
    good = header(0x0B, 4) + bytes.fromhex("0001e240")
    noise = [bytes(rng.randrange(256) for _ in range(rng.randrange(60))) for _ in range(64)]
    bad = {"header": {"code": 0x0B}, "body": {"fields": {"value0": "x"}}}

    def work(n):
        for i in range(n):
            trovcodec.decode(good + noise[i % 64], format="raw")
            trovcodec.encode({"header": {"code": 0x0B}, "body": {"fields": {"value0": i}}})
            try:
                trovcodec.encode(bad)
            except trovcodec.TrovError:
                pass
            try:
                trovcodec.decode(noise[i % 64] + good, format="raw", strict=True)
            except trovcodec.TrovError:
                pass

    work(20000)  # caches and allocator pools settle
    before = resident_kib()
    work(100000)
    grown = resident_kib() - before
    assert grown < 2048, f"resident memory grew by {grown} KiB over 10^5 calls"
