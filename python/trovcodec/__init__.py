"""The TROV codec for Python.

Packets are the objects the ``trov`` tool prints: ``decode`` gives, per
packet, the dict that ``json.loads`` makes of the line ``trov decode --ndjson``
prints for it, and ``encode`` takes such a dict (as ``trov encode`` does) and
returns the packet's bytes. Both run the tool's own code through the
TrovCodec library, so the two never disagree.

    >>> import trovcodec
    >>> packet = trovcodec.decode(bytes.fromhex(
    ...     "a7e5 1001 000b 0000 0004 00000000 00000000 0001 0001e240"))[0]
    >>> packet["body"]["fields"]
    {'value0': 123456}

See docs/python.md for the packet object and a longer session.
"""

from __future__ import annotations

import os
from typing import Any, BinaryIO, Dict, Iterable, Iterator, List, Optional, Union

from . import _trovcodec

__all__ = [
    "TrovError",
    "decode",
    "iter_decode",
    "encode",
    "encode_all",
    "describe",
    "tables",
    "__version__",
]

#: The loaded TrovCodec library's version, "MAJOR.MINOR.PATCH".
__version__: str = _trovcodec.library_version()

Packet = Dict[str, Any]
Source = Union[bytes, bytearray, memoryview, str, "os.PathLike[str]", BinaryIO]


class TrovError(ValueError):
    """A failure of the codec.

    Attributes:
        result: the library's result code (``2`` for BAD_PACKET, ...); a value
            that does not fit its field (a wrong type, out of range, a member
            that the layout does not have) is ``4`` (BAD_VALUE).
        name: the result's name, ``"SHORT_INPUT"``.
        meaning: the library's one-line meaning of the result.
        path_or_offset: where: for ``decode``, the offset in the input where
            decoding stopped (an int); for ``encode``, the JSON pointer of the
            offending value (``"/body/fields/value3"``; ``"/0/header/code"``
            in ``encode_all``); for ``describe``, ``None`` (or the argument's
            name when the argument itself is wrong).
        message: what is wrong, when more is known than the result says.
    """

    def __init__(self, result: int, name: str, meaning: str,
                 path_or_offset: Union[int, str, None], message: Optional[str] = None) -> None:
        super().__init__(result, name, meaning, path_or_offset, message)
        self.result = result
        self.name = name
        self.meaning = meaning
        self.path_or_offset = path_or_offset
        self.message = message

    def __str__(self) -> str:
        where = self.path_or_offset
        if isinstance(where, int):
            where = f"offset {where}"
        text = f"{self.name} ({self.result}): {self.message or self.meaning}"
        return f"{where}: {text}" if where is not None else text


_trovcodec._set_error_class(TrovError)


def decode(data: Source, *, request: bool = False, strict: bool = False,
           format: str = "detect") -> List[Packet]:
    """Decode every packet of ``data`` into a list of packet objects.

    ``data`` is bytes (or a bytearray, memoryview), a path, or a binary file
    object; it is framed into packets by each header's ``bodyLength``, as
    ``trov decode`` frames its input, and may be raw bytes or hex text
    (``format``: ``"detect"`` as the tool does, ``"raw"`` or ``"hex"``).

    Each packet object equals ``json.loads`` of the line that
    ``trov decode --ndjson`` prints for the packet: ``offset``, ``length``,
    ``header``, ``unitType`` and ``body`` (``status`` ``"decoded"`` with
    ``layout`` and ``fields``, ``"skipped"`` with ``reason``, ``"failed"``
    with ``error``, or ``"partial"``, an event list up to the event in its
    ``error``). Bodies are read as replies, or with ``request=True`` as
    the requests of their body codes.

    A packet that fails to decode is its failed object, and decoding goes on
    with the next one, as a dissector does; with ``strict=True`` the first
    one raises :class:`TrovError` (``path_or_offset`` is the offset where
    decoding stopped). Hex text that cannot be read raises ``ValueError``, a
    path that cannot be opened ``OSError``.
    """
    return _trovcodec.decode(data, request, strict, format)


def iter_decode(source: Source, *, request: bool = False, strict: bool = False,
                format: str = "detect") -> Iterator[Packet]:
    """Decode the packets of ``source`` one at a time, in bounded memory.

    As :func:`decode`, but an iterator: the source (a path, bytes or a binary
    file object, raw or any hex text and dump the tool reads) is read a chunk
    at a time, so at most one packet (20 + 65535 bytes) and a chunk are held
    however long the input. A file object is read with ``read(65536)``.
    """
    return _trovcodec.Decoder(source, request, strict, format)


def encode(packet: Packet) -> bytes:
    """Encode one packet object into the request packet's bytes.

    ``packet`` has the shape :func:`decode` gives (``trov encode`` reads the
    same): ``header`` (every member but ``bodyLength`` is read; ``code`` is
    required, ``mark`` and ``version`` default to the protocol's) and
    ``body["fields"]`` in the request layout of the header's body code. Counts
    and lengths are computed from the data; integers may also be ``"0x..."``
    strings; bytes are hex strings as decode gives them. The inverse of
    ``decode(..., request=True)``.

    Raises :class:`TrovError` for every failure, ``path_or_offset`` naming the
    JSON pointer of the value at fault.
    """
    return _trovcodec.encode(packet)


def encode_all(packets: Iterable[Packet]) -> bytes:
    """Encode packet objects one after another into one byte string.

    A packet whose body was not decoded (``"skipped"``, ``"failed"``, or
    trailing bytes) raises :class:`TrovError`, as does any packet that
    :func:`encode` refuses; ``path_or_offset`` starts with the packet's index
    (``"/2/body/fields/value0"``).
    """
    return _trovcodec.encode_all(packets)


def describe(kind: str, code: int, *, version: int = 0, request: bool = False) -> Dict[str, Any]:
    """The layout of one record, as ``trov tables --json`` lists it.

    ``kind`` is ``"body"``, ``"event"``, ``"method"``, ``"attribute"`` or
    ``"data_type"``; ``request`` picks the side of a body or method. The
    result has ``code``, ``side`` (bodies and methods), ``layout`` (the
    record's name), ``form``, ``recordBytes``, ``arrayCountBytes`` (values with
    an array form), ``fields`` (``name`` and ``kind`` each; nested records
    with their ``record`` and ``fields``) and, for a selector value,
    ``variants``. ``version`` is the header version byte the layout is looked
    up at: 0 finds the layouts that hold at every version.

    Raises :class:`TrovError` when the library has no such layout (``result``
    is the family's "no codec" result, 9 to 13) or an argument is out of range.
    """
    return _trovcodec.describe(kind, code, version, request)


def tables() -> Dict[str, Any]:
    """Every layout the library describes, as ``trov tables --json`` prints it.

    A dict with ``version`` (the header version the tables are listed at) and
    the lists ``bodies``, ``events``, ``methods``, ``attributes`` and
    ``dataTypes``, each row as :func:`describe` gives it. A fresh copy each call.
    """
    return _trovcodec.tables()
