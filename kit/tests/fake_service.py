"""A stand-in for the service that says what a test wants, when it wants; it listens on a port of its own."""

from __future__ import annotations

import asyncio
import json
from collections.abc import Callable
from types import TracebackType
from typing import Any, Self

Handler = Callable[["FakeService", Any], Any]


class FakeService:
    """`handle` gets each message and returns the answer, None for none. The connecting client's first question is
    answered without it."""

    def __init__(self, handle: Handler) -> None:
        self.connections = 0
        self.port = 0
        self._handle = handle
        self._writer: asyncio.StreamWriter | None = None

    async def __aenter__(self) -> Self:
        self._server = await asyncio.start_server(self._serve, "127.0.0.1", self.port)
        self.port = self._server.sockets[0].getsockname()[1]
        return self

    async def __aexit__(self, kind: type[BaseException] | None, error: BaseException | None,
                        trace: TracebackType | None) -> None:
        self.hang_up()
        self._server.close()
        await self._server.wait_closed()

    def say(self, message: object) -> None:
        assert self._writer is not None
        self._writer.write(json.dumps(message).encode() + b"\n")

    def tell(self, name: str, **params: object) -> None:
        self.say({"jsonrpc": "2.0", "method": name, "params": params})

    def hang_up(self) -> None:
        if self._writer is not None:
            self._writer.close()

    async def _serve(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
        self.connections += 1
        self._writer = writer
        try:
            self.say(answer_to(json.loads(await reader.readline()), {"connected": True}))
            while line := await reader.readline():
                message = self._handle(self, json.loads(line))
                if message is not None:
                    self.say(message)
        finally:
            writer.close()


def answer_to(request: dict[str, Any], result: object) -> dict[str, object]:
    return {"id": request["id"], "jsonrpc": "2.0", "result": result}
