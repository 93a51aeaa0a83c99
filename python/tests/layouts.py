"""Hypothesis strategies for records, made from the layout description alone.

A record of a layout is a dict with one member per field (as ``trov decode``
prints it, and ``trov encode`` reads it), drawn by the field's kind; count
fields are left out (the encoder counts the data) and come back on decode.
"""

from functools import lru_cache

from hypothesis import strategies as st

import trovcodec

VERSION = 0x10
TABLES = trovcodec.tables()
# Kinds whose data ends the body: a body cut short is still a body of them.
OPEN_ENDED = {"rest"}


def uint(bits):
    return st.integers(0, (1 << bits) - 1)


def hex_bytes(max_size):
    return st.binary(max_size=max_size).map(bytes.hex)


PRINTABLE = st.text(st.characters(min_codepoint=0x20, max_codepoint=0x7E), max_size=6)
NOT_PRINTABLE = st.binary(min_size=1, max_size=6).filter(lambda b: any(c < 0x20 or c > 0x7E for c in b))
# Characters print as a string when every byte is printable, else as {"hex": ...}.
CHARS = st.one_of(PRINTABLE, NOT_PRINTABLE.map(lambda b: {"hex": b.hex()}))
# Options of kinds 1 to 5 carry values of a fixed size.
OPTION_SIZES = {0: 0, 1: 4, 2: 4, 3: 2, 4: 2, 5: 6}


def option():
    def value(kind):
        size = OPTION_SIZES.get(kind)
        data = st.binary(min_size=size, max_size=size) if size is not None else st.binary(max_size=6)
        return data.map(lambda b: {"kind": kind, "value": b.hex()})
    return st.integers(0, 0xFF).flatmap(value)


def small_list(element, max_size=3):
    return st.lists(element, max_size=max_size)


@lru_cache(maxsize=None)
def attribute_layout(code, version=VERSION):
    return trovcodec.describe("attribute", code, version=version)


@lru_cache(maxsize=None)
def data_type_layout(code):
    return trovcodec.describe("data_type", code, version=VERSION)


def nests(fields):
    """Whether records of these fields hold typed values or nested lists."""
    return any(f["kind"] in ("attribute", "attributes", "entry", "value") or nests(f.get("fields", []))
               for f in fields)


FLAT_ATTRIBUTES = [r["code"] for r in TABLES["attributes"] if not nests(r["fields"])]
ALL_ATTRIBUTES = [r["code"] for r in TABLES["attributes"]]
DATA_TYPES = [r["code"] for r in TABLES["dataTypes"]]


def record(fields, depth=0):
    """A record of `fields`: every field but counts (and the record-only buffer)."""
    members = {f["name"]: field(f, depth) for f in fields if f["kind"] not in ("count", "buffer")}
    return st.fixed_dictionaries(members)


def value_of(layout, depth):
    """The value of an attribute or data type: one element record, a list of them
    (array form), or for a selector value the variant a selector picks."""
    if layout["form"] == "selector":
        def variant(v):
            rest = [f for f in v["fields"] if f["name"] != "selector"]
            return record(rest, depth + 1).map(lambda r, s=v["selector"]: {"selector": s, **r})
        return st.sampled_from(layout["variants"]).flatmap(variant)
    element = record(layout["fields"], depth + 1)
    return small_list(element) if layout.get("arrayCountBytes") else element


def attribute(depth, codes=None, version=VERSION):
    """{"id": N, "value": V} of an attribute known at `version`."""
    pool = codes or (ALL_ATTRIBUTES if depth < 2 else FLAT_ATTRIBUTES)
    return st.sampled_from(pool).flatmap(
        lambda code: value_of(attribute_layout(code, version), depth).map(lambda v: {"id": code, "value": v}))


def field(f, depth):
    kind = f["kind"]
    simple = {
        "u8": uint(8), "u16": uint(16), "u32": uint(32), "reserved": st.just(0),
        # A block takes as many bytes as given, up to its size (2 and more),
        # and decodes padded with zeros: see matches().
        "bytes": hex_bytes(2), "octets": hex_bytes(8), "rest": hex_bytes(8), "chars": CHARS,
        "u16s": small_list(uint(16), 4), "u32s": small_list(uint(32), 4),
        "u8u32items": small_list(st.tuples(uint(8), uint(32)).map(list)),
        "u32u8items": small_list(st.tuples(uint(32), uint(8)).map(list)),
        "bytepairs": small_list(st.tuples(uint(8), uint(8)).map(list)),
        "option": option(), "options": small_list(option()),
    }
    if kind in simple:
        return simple[kind]
    if kind == "attribute":
        return attribute(depth)
    if kind == "attributes":
        return small_list(attribute(depth + 1), 2 if depth < 2 else 0)
    if kind == "entry":
        # Entries are coded at version 0.
        return attribute(depth, FLAT_ATTRIBUTES, version=0)
    if kind == "value":
        return st.sampled_from(DATA_TYPES).flatmap(
            lambda code: value_of(data_type_layout(code), depth).map(lambda v: {"type": code, "value": v}))
    if kind == "record":
        return record(f["fields"], depth + 1)
    if kind == "records":
        return small_list(record(f["fields"], depth + 1))
    raise AssertionError(f"no strategy for fields of kind {kind!r}")


def open_ended(fields):
    return any(f["kind"] in OPEN_ENDED for f in fields)


def matches(given, decoded):
    """Whether `decoded` is `given` as the decoder prints it: counts appear
    (members `given` lacks, integers), and a byte block is padded to its size
    with zeros."""
    if isinstance(given, dict):
        if not isinstance(decoded, dict) or not set(given) <= set(decoded):
            return False
        extra = set(decoded) - set(given)
        return all(isinstance(decoded[k], int) for k in extra) and all(
            matches(given[k], decoded[k]) for k in given)
    if isinstance(given, list):
        return isinstance(decoded, list) and len(given) == len(decoded) and all(
            matches(g, d) for g, d in zip(given, decoded))
    if isinstance(given, str) and isinstance(decoded, str) and given != decoded:
        return decoded.startswith(given) and set(decoded[len(given):]) <= {"0"}
    return given == decoded
