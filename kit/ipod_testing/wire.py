"""Keeps what goes to and fro between tests and the service, in files that are compared with the contract later."""

from __future__ import annotations

import asyncio
import contextlib
import os
import tempfile
from collections.abc import Iterator
from typing import Any, BinaryIO

from ipod_client.client import PORT


@contextlib.contextmanager
def recorded() -> Iterator[None]:
    """Where IPOD_WIRE_FOLDER says, a file for each connection; nothing is kept without it.

    A piece is a direction and a length on a line, then the bytes.
    """
    folder = os.environ.get("IPOD_WIRE_FOLDER")
    if folder is None:
        yield
        return
    connect = asyncio.open_connection
    with contextlib.ExitStack() as files:
        async def tapped(host: str, port: int, **options: Any) -> tuple[asyncio.StreamReader, asyncio.StreamWriter]:
            streams = await connect(host, port, **options)
            if port == PORT:
                descriptor, _ = tempfile.mkstemp(prefix="wire-", dir=folder)
                _tap(*streams, files.enter_context(open(descriptor, "wb")))
            return streams

        setattr(asyncio, "open_connection", tapped)
        try:
            yield
        finally:
            asyncio.open_connection = connect


def _tap(reader: asyncio.StreamReader, writer: asyncio.StreamWriter, file: BinaryIO) -> None:
    feed, write = reader.feed_data, writer.write

    def received(data: bytes) -> None:
        file.write(b"<%d\n%b" % (len(data), data))
        feed(data)

    def sent(data: bytes) -> None:
        file.write(b">%d\n%b" % (len(data), data))
        write(data)

    setattr(reader, "feed_data", received)
    setattr(writer, "write", sent)
