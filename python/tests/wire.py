"""A small packet writer for what only replies carry (events, method replies,
reply bodies, typed values), written from the layout description's numbers
(wire widths and count fields) so that the library's decoder can be checked
against records drawn from the same description. It writes what the
description says and nothing else: every packet it makes is one the decoder
must read back to the record it was made from."""

import struct
from functools import lru_cache

from trovcodec import _trovcodec

VERSION = 0x10
UNIT_TYPE = 1
# An event whose record holds a typed value ("value" kind): the carrier of
# the data types, which only events hold.
EVENT_WITH_VALUE = (0x36, "value4")

# Kind ids (TrovLayout.h).
U8, U16, U32, RESERVED, BYTES, BYTES12, OCTETS, CHARS = 1, 2, 3, 4, 5, 6, 7, 8
U16S, U32S, WIDE_U32S, U8U32, U32U8, PAIRS, REST, COUNT = 9, 10, 11, 12, 13, 14, 15, 16
ATTRIBUTE, VALUE, RESERVED_VALUE, OPTION, ATTRIBUTES, EVENT_ATTRIBUTES, BUFFER = 17, 18, 19, 20, 21, 22, 23
RECORD, RECORDS, OPTIONS, ENTRY = 24, 25, 26, 27


@lru_cache(maxsize=None)
def layout(kind, code, version=VERSION, request=False):
    return _trovcodec._wire_layout(kind, code, version, request)


def uint(value, width):
    return value.to_bytes(width, "big")


def chars(value):
    return bytes.fromhex(value["hex"]) if isinstance(value, dict) else value.encode("ascii")


def data_of(f, value):
    """The bytes or elements a counted field carries, and their count."""
    kind = f["kindId"]
    if kind in (OCTETS, REST):
        data = bytes.fromhex(value)
        return data, len(data)
    if kind == CHARS:
        data = chars(value)
        return data, len(data)
    if kind in (U16S, U32S, WIDE_U32S):
        width = 2 if kind == U16S else 4
        return b"".join(uint(v, width) for v in value), len(value)
    if kind == U8U32:
        return b"".join(uint(a, 1) + uint(b, 4) for a, b in value), len(value)
    if kind == U32U8:
        return b"".join(uint(a, 4) + uint(b, 1) for a, b in value), len(value)
    if kind == PAIRS:
        return b"".join(uint(a, 1) + uint(b, 1) for a, b in value), len(value)
    raise AssertionError(f"not counted data: {f}")


def fields_of(description, record_value, at_version):
    """A record's fields in wire order: counts first computed from their data."""
    fields = description["fields"]
    counts = {}
    for f in fields:
        if f["countField"] >= 0 and f["name"] in record_value:
            value = record_value[f["name"]]
            counts[f["countField"]] = len(value) if f["kindId"] in (RECORDS,) else data_of(f, value)[1]
    out = b""
    for i, f in enumerate(fields):
        kind = f["kindId"]
        if kind == COUNT:
            out += uint(counts.get(i, 0), f["countBytes"])
            continue
        if kind in (RESERVED, BUFFER):
            continue
        value = record_value[f["name"]]
        out += field(f, value, at_version)
    return out


def field(f, value, at_version):
    kind = f["kindId"]
    if kind in (U8, U16, U32):
        return uint(value, {U8: 1, U16: 2, U32: 4}[kind])
    if kind in (BYTES, BYTES12):
        data = bytes.fromhex(value)
        size = 12 if kind == BYTES12 else f["width"]
        return data + bytes(size - len(data))
    if kind in (OCTETS, CHARS, U16S, U32S, WIDE_U32S, U8U32, U32U8, PAIRS, REST):
        data, count = data_of(f, value)
        return (uint(count, f["countBytes"]) if f["countBytes"] else b"") + data
    if kind == ATTRIBUTE:
        return uint(value["id"], 2) + typed("attribute", value["id"], value["value"], at_version)
    if kind in (VALUE, RESERVED_VALUE):
        return uint(value["type"], 2) + typed("data_type", value["type"], value["value"], at_version)
    if kind == OPTION:
        return option(value)
    if kind == OPTIONS:
        return uint(len(value), 1) + b"".join(option(o) for o in value)
    if kind in (ATTRIBUTES, EVENT_ATTRIBUTES):
        return uint(len(value), 2) + b"".join(entry(e, at_version) for e in value)
    if kind == ENTRY:
        return entry(value, 0)
    if kind == RECORD:
        return fields_of(f["nested"], value, at_version)
    if kind == RECORDS:
        return b"".join(fields_of(f["nested"], v, at_version) for v in value)
    raise AssertionError(f"no wire form for {f}")


def option(value):
    data = bytes.fromhex(value["value"])
    return uint(value["kind"], 1) + uint(len(data), 1) + data


def entry(value, at_version):
    data = typed("attribute", value["id"], value["value"], at_version)
    return uint(value["id"], 2) + uint(len(data), 2) + data


def typed(kind, code, value, at_version):
    """A typed value: the selected variant, one element, or a counted array."""
    description = layout(kind, code, at_version)
    if description["variants"]:
        return fields_of(description["variants"][value["selector"]], value, at_version)
    if description["arrayCountBytes"]:
        return uint(len(value), description["arrayCountBytes"]) + b"".join(
            fields_of(description, v, at_version) for v in value)
    return fields_of(description, value, at_version)


def record(what, fields):
    """The wire bytes of a record of `what` (("event", code), ("method", code),
    ("body", code)), on the reply side."""
    kind, code = what
    return fields_of(layout(kind, code), fields, VERSION)


def packet(code, body):
    header = struct.pack(">HBBHHHIIH", 0xA7E5, VERSION, 1, code, 0, len(body), 0, 0, UNIT_TYPE)
    return header + body


def short_event_list(event_code, event_body):
    """Body 0x0a: a u32, the u8 count (1), then the event's code, a u8 and its body."""
    return packet(0x0A, uint(0x11223344, 4) + uint(1, 1) + uint(event_code, 2) + uint(7, 1) + event_body)


def method_reply(method_code, params):
    """Body 0x1d: a u32, the method code, then the parameters."""
    return packet(0x1D, uint(9, 4) + uint(method_code, 2) + params)


def event_with_value(event, name, data_type, value):
    """A record of `event` with zeros and empty data everywhere but the typed
    value `name`, which holds `value` of `data_type`."""
    fields = {}
    for f in layout("event", event)["fields"]:
        kind = f["kindId"]
        if kind in (COUNT, RESERVED, BUFFER):
            continue
        if kind in (U8, U16, U32):
            fields[f["name"]] = 0
        elif kind in (BYTES, BYTES12, OCTETS, REST):
            fields[f["name"]] = ""
        elif kind == CHARS:
            fields[f["name"]] = ""
        else:
            fields[f["name"]] = []
    fields[name] = {"type": data_type, "value": value}
    return fields


# Typed values with room reserved in the record: only these types are kept,
# the others are read past and leave the value unset (None).
KEPT_RESERVED_TYPES = {16, 17, 19, 20}


def as_decoded(what, fields):
    """`fields` as the decoder gives them back: a reserved typed value of a type
    without room is None."""
    kind, code = what
    out = dict(fields)
    for f in layout(kind, code)["fields"]:
        if f["kindId"] == RESERVED_VALUE and out[f["name"]]["type"] not in KEPT_RESERVED_TYPES:
            out[f["name"]] = {"type": out[f["name"]]["type"], "value": None}
    return out
