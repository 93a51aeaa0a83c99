"""Records drawn from the layout description of every body, method, event,
attribute and data type: they encode, decode back equal, and no truncation
of their packets is taken for a packet.

Requests are encoded by the library (encode); the events, method replies and
data types that only replies carry are written by the small writer in
wire.py from the same description, and decoded by the library."""

import pytest
from hypothesis import given, strategies as st

import trovcodec
import layouts
import wire
from layouts import TABLES, VERSION

ATTRIBUTE_BODY = 0x12
METHOD_BODY = 0x1D
RAW_METHOD = 0x2001  # no method of its own: its parameters are raw bytes


def truncations(packet):
    """The packet with its body cut short at every length, bodyLength to match:
    one stream, one packet per length."""
    body = packet[20:]
    return b"".join(packet[:8] + len(body[:k]).to_bytes(2, "big") + packet[10:20] + body[:k]
                    for k in range(len(body)))


def check_truncations(packet, request, open_ended, where):
    stream = truncations(packet)
    cut = trovcodec.decode(stream, request=request, format="raw")
    assert len(cut) == len(packet) - 20
    for k, short in enumerate(cut):
        status = short["body"]["status"]
        if status == "decoded" and request:
            # Only a body whose end is open (raw bytes, the rest) may be cut;
            # what is read from it then encodes to exactly the cut packet.
            assert open_ended, f"{where}: body cut to {k} bytes decoded: {short}"
            assert trovcodec.encode(short) == packet[:8] + k.to_bytes(2, "big") + packet[10:20 + k]
        elif status == "decoded":
            assert open_ended, f"{where}: reply cut to {k} bytes decoded: {short}"
        else:  # an event list keeps the events before the one cut short
            assert status in ("failed", "partial"), (where, short)
    first = next((p for p in cut if p["body"]["status"] != "decoded"), None)
    if first is not None:
        with pytest.raises(trovcodec.TrovError) as raised:
            trovcodec.decode(stream, request=request, format="raw", strict=True)
        assert raised.value.path_or_offset == first["body"]["error"]["offset"]


def check_request(code, fields, open_ended, where):
    packet = trovcodec.encode({"header": {"code": code, "extension": 1, "flags": 1}, "body": {"fields": fields}})
    [decoded] = trovcodec.decode(packet, request=True)
    assert decoded["body"]["status"] == "decoded", (where, decoded)
    assert layouts.matches(fields, decoded["body"]["fields"]), (where, fields, decoded["body"]["fields"])
    assert trovcodec.encode(decoded) == packet, where
    check_truncations(packet, True, open_ended, where)


REQUEST_BODIES = [r for r in TABLES["bodies"] if r["side"] == "request" and r["form"] == "fields"]
REQUEST_METHODS = [r for r in TABLES["methods"] if r["side"] == "request"]


@given(st.data())
def test_every_request_body(data):
    for row in REQUEST_BODIES:
        fields = data.draw(layouts.record(row["fields"]), label=f"body 0x{row['code']:04x}")
        check_request(row["code"], fields, layouts.open_ended(row["fields"]), f"body 0x{row['code']:04x}")


@given(st.data())
def test_every_request_method(data):
    for row in REQUEST_METHODS + [{"code": RAW_METHOD, "form": "raw", "fields": []}]:
        where = f"method 0x{row['code']:04x}"
        if row["form"] == "raw":
            params = data.draw(layouts.hex_bytes(8), label=where)
        elif row["form"] == "none":
            params = {}
        else:
            params = data.draw(layouts.record(row["fields"]), label=where)
        fields = {"value0": data.draw(layouts.uint(32)), "method": row["code"], "params": params}
        check_request(METHOD_BODY, fields, row["form"] == "raw" or layouts.open_ended(row["fields"]), where)


@given(st.data())
def test_every_attribute(data):
    for row in TABLES["attributes"]:
        where = f"attribute 0x{row['code']:04x}"
        value = data.draw(layouts.value_of(row, 0), label=where)
        check_request(ATTRIBUTE_BODY, {"id": {"id": row["code"], "value": value}}, False, where)


# ---- what only replies carry: written by wire.py, decoded by the library -----------

REPLY_BODIES = [r for r in TABLES["bodies"] if r["side"] == "reply" and r["form"] == "fields"]
REPLY_METHODS = [r for r in TABLES["methods"] if r["side"] == "reply" and r["form"] != "none"]


def check_reply(packet, given, pick, open_ended, where):
    [decoded] = trovcodec.decode(packet)
    assert decoded["body"]["status"] == "decoded", (where, decoded)
    got = pick(decoded["body"]["fields"])
    assert layouts.matches(given, got), (where, given, got)
    check_truncations(packet, False, open_ended, where)


@given(st.data())
def test_every_event(data):
    for row in TABLES["events"]:
        where = f"event 0x{row['code']:04x}"
        fields = data.draw(layouts.record(row["fields"]), label=where)
        packet = wire.short_event_list(row["code"], wire.record(("event", row["code"]), fields))
        check_reply(packet, wire.as_decoded(("event", row["code"]), fields),
                    lambda f: f["events"][0]["fields"], True, where)


@given(st.data())
def test_every_reply_method(data):
    for row in REPLY_METHODS:
        where = f"method 0x{row['code']:04x} reply"
        fields = data.draw(layouts.record(row["fields"]), label=where)
        packet = wire.method_reply(row["code"], wire.record(("method", row["code"]), fields))
        check_reply(packet, fields, lambda f: f["params"], True, where)


@given(st.data())
def test_every_reply_body(data):
    for row in REPLY_BODIES:
        where = f"body 0x{row['code']:04x} reply"
        fields = data.draw(layouts.record(row["fields"]), label=where)
        packet = wire.packet(row["code"], wire.record(("body", row["code"]), fields))
        check_reply(packet, fields, lambda f: f, layouts.open_ended(row["fields"]), where)


@given(st.data())
def test_every_data_type(data):
    for row in TABLES["dataTypes"]:
        where = f"data type 0x{row['code']:04x}"
        value = data.draw(layouts.value_of(row, 0), label=where)
        event, name = wire.EVENT_WITH_VALUE
        fields = wire.event_with_value(event, name, row["code"], value)
        packet = wire.short_event_list(event, wire.record(("event", event), fields))
        check_reply(packet, {"type": row["code"], "value": value},
                    lambda f: f["events"][0]["fields"][name], True, where)
