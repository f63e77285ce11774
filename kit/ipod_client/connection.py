"""One TCP connection to the service: requests go out, answers and notifications come in."""

from __future__ import annotations

import asyncio
import itertools
import json
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass
from typing import Any

LONGEST_LINE = 1 << 30
"""Bytes: nothing that comes is longer. The list of all songs has no other bound than the player's memory."""

LARGEST_BATCH = 32
"""So many requests are carried out with no other client's in between."""


class ConnectionLost(ConnectionError):
    """There is no connection, or it went before the answer had come."""


class ServiceError(Exception):
    """The service answered with an error object."""

    def __init__(self, code: int, message: str) -> None:
        super().__init__(f"{message} ({code})")
        self.code = code


@dataclass(frozen=True)
class Request:
    method: str
    params: Mapping[str, object] | None = None
    """By name only: the service refuses an array, even an empty one."""

    def message(self, number: int) -> dict[str, object]:
        """Always with an id: the service answers requests without one too, and nobody could tell to which."""
        message: dict[str, object] = {"jsonrpc": "2.0", "method": self.method, "id": number}
        return message if self.params is None else message | {"params": dict(self.params)}


@dataclass(frozen=True)
class Reply:
    """An answer: with a result, with an error, or with neither, which some methods use for "nothing"."""

    result: Any = None
    error: ServiceError | None = None

    def value(self) -> Any:
        """The result, None when the answer had none. Raises the ServiceError when there was one."""
        if self.error is not None:
            raise self.error
        return self.result


@dataclass(frozen=True)
class Notification:
    name: str
    params: dict[str, Any]


class Connection:
    """Open until `ended`. Used on the event loop that opened it."""

    def __init__(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter,
                 on_notification: Callable[[Notification], None]) -> None:
        self.ended = asyncio.Event()
        self._reader = reader
        self._writer = writer
        self._on_notification = on_notification
        self._numbers = itertools.count(1)
        self._waiting: dict[object, asyncio.Future[Any]] = {}
        self._reading = asyncio.create_task(self._read())

    @classmethod
    async def open(cls, host: str, port: int, on_notification: Callable[[Notification], None]) -> Connection:
        """Raises OSError when nobody listens there."""
        return cls(*await asyncio.open_connection(host, port, limit=LONGEST_LINE), on_notification)

    async def close(self) -> None:
        self._reading.cancel()
        await asyncio.wait([self._reading])

    async def ask(self, request: Request) -> Reply:
        number = next(self._numbers)
        return to_reply(await self._exchange(number, request.message(number)))

    async def ask_together(self, requests: Sequence[Request]) -> list[Reply]:
        """A batch: no other client's request comes in between. The replies stand in the requests' order."""
        if not 0 < len(requests) <= LARGEST_BATCH:
            raise ValueError(f"a batch is of 1 to {LARGEST_BATCH} requests")
        messages = [request.message(next(self._numbers)) for request in requests]
        answers = await self._exchange(messages[0]["id"], messages)
        return [to_reply(answer) for answer in answers]

    async def _exchange(self, number: object, message: object) -> Any:
        if self.ended.is_set():
            raise ConnectionLost("the connection has ended")
        answer = self._waiting[number] = asyncio.get_running_loop().create_future()
        try:
            self._writer.write(json.dumps(message).encode() + b"\n")
            return await answer
        finally:
            del self._waiting[number]

    async def _read(self) -> None:
        reason = "the service has closed the connection"
        try:
            while line := await self._reader.readline():
                self._take(json.loads(line))
        except (OSError, ValueError, LookupError, TypeError) as error:
            reason = f"what came is no answer of the service's: {error}"
        finally:
            self.ended.set()
            self._writer.close()
            for answer in self._waiting.values():
                if not answer.done():
                    answer.set_exception(ConnectionLost(reason))

    def _take(self, message: Any) -> None:
        if isinstance(message, dict) and "method" in message:
            self._on_notification(Notification(message["method"], message["params"]))
            return
        number = message[0]["id"] if isinstance(message, list) else message["id"]
        if number is None:
            raise ValueError(json.dumps(message))
        # Nobody waits any more for the answer to a request that was given up.
        answer = self._waiting.get(number)
        if answer is not None and not answer.done():
            answer.set_result(message)


def to_reply(answer: Mapping[str, Any]) -> Reply:
    if "error" in answer:
        return Reply(error=ServiceError(answer["error"]["code"], answer["error"]["message"]))
    return Reply(answer.get("result"))
