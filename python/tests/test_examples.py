"""Every example packet: decode gives the tool's objects, from every kind of
source, and encode gives the packet back wherever the tool does."""

import io
import json
import re
import subprocess

import pytest

import trovcodec
from conftest import EXAMPLES

HEX_FILES = sorted(EXAMPLES.glob("*.hex"))


def options(hex_file):
    """The tool options an example is decoded with (its first line)."""
    first = hex_file.read_text().splitlines()[0]
    match = re.match(r"#\s*trov decode(.*)$", first)
    return match.group(1).split() if match else []


def raw_bytes(hex_file):
    """The example's bytes: plain hex with '#' comments."""
    text = "".join(line.split("#", 1)[0] for line in hex_file.read_text().splitlines())
    return bytes.fromhex("".join(text.split()))


@pytest.mark.parametrize("hex_file", HEX_FILES, ids=lambda p: p.stem)
def test_decode_equals_the_tool(hex_file, trov_tool):
    request = "--request" in options(hex_file)
    packets = trovcodec.decode(hex_file, request=request)
    # The golden file is what `trov decode` prints (tests/tools/check-examples).
    assert packets == json.loads(hex_file.with_suffix(".json").read_text())
    if trov_tool:
        lines = subprocess.run([trov_tool, "decode", "--ndjson", *options(hex_file), hex_file.name],
                               cwd=EXAMPLES, capture_output=True, check=False).stdout.splitlines()
        assert packets == [json.loads(line) for line in lines]
    # Every source gives the same objects: hex text or raw bytes, in memory,
    # as a file object, streamed.
    data = raw_bytes(hex_file)
    assert trovcodec.decode(data, request=request) == packets
    assert trovcodec.decode(bytearray(data), request=request, format="raw") == packets
    assert trovcodec.decode(memoryview(data), request=request) == packets
    assert list(trovcodec.iter_decode(io.BytesIO(data), request=request)) == packets
    assert list(trovcodec.iter_decode(str(hex_file), request=request, format="hex")) == packets
    assert trovcodec.decode(hex_file.read_bytes(), request=request) == packets


def tool_encodes_back(trov_tool, hex_file, data):
    """Whether `trov encode` turns the golden objects back into the example's bytes."""
    done = subprocess.run([trov_tool, "encode", "--raw", str(hex_file.with_suffix(".json"))],
                          capture_output=True, check=False)
    return done.returncode == 0 and done.stdout == data


@pytest.mark.parametrize("hex_file", HEX_FILES, ids=lambda p: p.stem)
def test_encode_inverts_decode_where_the_tool_does(hex_file, trov_tool):
    data = raw_bytes(hex_file)
    request = "--request" in options(hex_file)
    packets = trovcodec.decode(data, request=request)
    round_trips = tool_encodes_back(trov_tool, hex_file, data) if trov_tool else request
    if round_trips:
        assert trovcodec.encode_all(packets) == data
        assert b"".join(trovcodec.encode(p) for p in packets) == data
    elif all(p.get("body", {}).get("status") == "decoded" and "unread" not in p["body"] for p in packets):
        # Replies encode as the requests of their codes where one exists; a
        # packet that encodes decodes back to the same fields.
        for packet in packets:
            try:
                again = trovcodec.decode(trovcodec.encode(packet), request=True)[0]
            except trovcodec.TrovError:
                continue
            assert again["body"]["status"] == "decoded"


def test_some_examples_round_trip(trov_tool):
    """The round trip above is not vacuous."""
    requests = [h for h in HEX_FILES if "--request" in options(h)]
    assert len(requests) >= 3
    for hex_file in requests:
        assert trovcodec.encode_all(trovcodec.decode(hex_file, request=True)) == raw_bytes(hex_file)


def test_strict_raises_what_the_failed_object_says():
    for hex_file in HEX_FILES:
        request = "--request" in options(hex_file)
        packets = trovcodec.decode(hex_file, request=request)
        failed = [p for p in packets if "skipped" in p or p["body"]["status"] in ("failed", "partial")]
        if not failed:
            assert trovcodec.decode(hex_file, request=request, strict=True) == packets
            continue
        with pytest.raises(trovcodec.TrovError) as raised:
            trovcodec.decode(hex_file, request=request, strict=True)
        got = raised.value
        if "skipped" in failed[0]:  # bytes that are not a packet
            assert (got.result, got.name, got.path_or_offset) == (2, "BAD_PACKET", failed[0]["offset"])
        else:
            error = failed[0]["body"]["error"]
            assert (got.result, got.name, got.meaning, got.path_or_offset) == (
                error["result"], error["name"], error["meaning"], error["offset"])
        # Packets before the failure come out of the iterator first.
        streamed = trovcodec.iter_decode(hex_file, request=request, strict=True)
        assert [next(streamed) for _ in range(packets.index(failed[0]))] == packets[:packets.index(failed[0])]
        with pytest.raises(trovcodec.TrovError):
            next(streamed)


def test_describe_and_tables_are_the_tools(trov_tool):
    tables = trovcodec.tables()
    if trov_tool:
        printed = subprocess.run([trov_tool, "tables", "--json"], capture_output=True, check=True).stdout
        assert tables == json.loads(printed)
    kinds = {"bodies": "body", "events": "event", "methods": "method", "attributes": "attribute",
             "dataTypes": "data_type"}
    for family, kind in kinds.items():
        assert tables[family], family
        for row in tables[family][:: max(1, len(tables[family]) // 40)]:
            described = trovcodec.describe(kind, row["code"], version=tables["version"],
                                           request=row.get("side") == "request")
            assert described == row
    with pytest.raises(trovcodec.TrovError) as raised:
        trovcodec.describe("event", 0xFFFF)
    assert (raised.value.result, raised.value.name) == (12, "NO_EVENT_CODEC")
    for bad in [("table", 1), ("body", -1), ("body", 0x10000)]:
        with pytest.raises(trovcodec.TrovError):
            trovcodec.describe(*bad)


def test_version_is_the_librarys():
    assert re.fullmatch(r"\d+\.\d+\.\d+", trovcodec.__version__)
    assert trovcodec.__version__ == trovcodec._trovcodec.BUILT_WITH_VERSION
