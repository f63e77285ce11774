"""The service, as a user interface wants it: a connection that comes back, and answers that are not outdated."""

from __future__ import annotations

import asyncio
import contextlib
from collections import Counter
from collections.abc import Callable, Iterator, Mapping, Sequence
from types import TracebackType
from typing import Any, Self, cast

from .connection import Connection, ConnectionLost, Notification, Reply, Request
from .contract import METHODS, NOTIFICATIONS, Contract, TrackInfo
from .picture import Cover, to_cover

PORT = 8883

_TOLD_BY = {
    "isIpodConnected": "ipodConnectionNotification",
    "getHasPlayableData": "ipodConnectionNotification",
    "isTrackPaused": "trackPausedNotification",
}


class Client(Contract):
    """Every method of the service under its own name, and what takes more than one of them.

    `async with Client() as client` looks for the service until the block is left, and again whenever the
    connection ends. Without a connection methods raise ConnectionLost at once; an answer that does not come
    within `patience` seconds is a TimeoutError (while the player says that it is busy, the service answers nobody).
    Used on one event loop. Handlers are called there, in the order of what arrives, and do not wait.
    """

    def __init__(self, host: str = "127.0.0.1", port: int = PORT, *, patience: float = 30.0,
                 retry: float = 0.25) -> None:
        self._address = host, port
        self._patience = patience
        self._retry = retry
        self._connection: Connection | None = None
        self._is_up = asyncio.Event()
        self._came: Counter[str] = Counter()
        self._handlers: list[Callable[[Notification], None]] = []
        self._link_handlers: list[Callable[[bool], None]] = []

    async def __aenter__(self) -> Self:
        self._keeper = asyncio.create_task(self._keep_connected())
        return self

    async def __aexit__(self, kind: type[BaseException] | None, error: BaseException | None,
                        trace: TracebackType | None) -> None:
        self._keeper.cancel()
        await asyncio.wait([self._keeper])

    # Connection

    @property
    def is_connected(self) -> bool:
        """To the service. Whether that has a player is another matter: isIpodConnected."""
        return self._is_up.is_set()

    async def connected(self) -> None:
        await self._is_up.wait()

    def on_link(self, handler: Callable[[bool], None]) -> None:
        """Called when a connection to the service is there or has ended. What was known is then to be asked anew."""
        self._link_handlers.append(handler)

    async def _keep_connected(self) -> None:
        while True:
            with contextlib.suppress(OSError):
                connection = await Connection.open(*self._address, self._hand_out)
                try:
                    await self._use(connection)
                finally:
                    await connection.close()
            await asyncio.sleep(self._retry)

    async def _use(self, connection: Connection) -> None:
        # Notifications come once the service has accepted the connection: with the first answer at the latest.
        async with asyncio.timeout(self._patience):
            await connection.ask(Request("isIpodConnected"))
        self._connection = connection
        self._set_link(True)
        try:
            await connection.ended.wait()
        finally:
            self._connection = None
            self._set_link(False)

    def _set_link(self, is_up: bool) -> None:
        (self._is_up.set if is_up else self._is_up.clear)()
        for handler in self._link_handlers:
            _guarded(handler, is_up)

    # Requests

    async def call(self, method: str, params: Mapping[str, object] | None = None) -> Any:
        """The result; None where the service answers without one. Raises ServiceError, ConnectionLost, TimeoutError.

        A notification does not wait for an answer that is on its way, which may be older then: when one came in
        meanwhile that tells of the same, the question is asked again.
        """
        request = _checked(Request(method, params))
        told_by = _TOLD_BY.get(method, "")
        async with asyncio.timeout(self._patience):
            while True:
                before = self._came[told_by]
                reply = await self._link().ask(request)
                if self._came[told_by] == before:
                    return reply.value()

    async def batch(self, *requests: Request) -> list[Reply]:
        """1 to 32 requests that no other client's come in between of."""
        async with asyncio.timeout(self._patience):
            return await self._link().ask_together([_checked(request) for request in requests])

    def _link(self) -> Connection:
        if self._connection is None:
            raise ConnectionLost("there is no connection to the service")
        return self._connection

    # Notifications

    def listen(self, handler: Callable[[Notification], None]) -> Callable[[], None]:
        """Calls it with every notification; what is returned ends that."""
        self._handlers.append(handler)
        return lambda: self._handlers.remove(handler)

    @contextlib.contextmanager
    def inbox(self, *names: str) -> Iterator[asyncio.Queue[dict[str, Any]]]:
        """What those notifications carry while the block lasts: open it first, then ask for what will tell."""
        _known(names)
        queue: asyncio.Queue[dict[str, Any]] = asyncio.Queue()
        end = self.listen(lambda came: queue.put_nowait(came.params) if came.name in names else None)
        try:
            yield queue
        finally:
            end()

    def _hand_out(self, notification: Notification) -> None:
        self._came[notification.name] += 1
        for handler in tuple(self._handlers):
            _guarded(handler, notification)

    # What takes more than one request

    async def ready(self) -> None:
        """Waits until a player is there and its library can be browsed.

        A player that builds its database is connected before. Nothing tells of the end, so it is asked for.
        """
        while True:
            with contextlib.suppress(ConnectionLost):
                if await self.is_ready():
                    return
            await asyncio.sleep(self._retry)
            await self.connected()

    async def is_ready(self) -> bool:
        if not (await self.isIpodConnected())["connected"]:
            return False
        page = await self.getBrowseList(startIndex=0, itemCount=1)
        # No category is supported until there is a session; inside a category there is one.
        return page["isRootCategory"] is False or any(item["isSupported"] for item in page["categoryItems"])

    async def current_track(self) -> TrackInfo | None:
        """With the real position, which only the notification behind the answer has; None while nothing is current.

        No notification tells that the player has stopped, at the queue's end for instance: ask this when
        trackTimeNotification stays away though nothing is paused.
        """
        with self.inbox("trackInfoNotification") as inbox:
            await self.getCurrentTrackInfo()
            async with asyncio.timeout(self._patience):
                track = cast(TrackInfo, (await inbox.get())["trackInfo"])
        return track if is_current(track) else None

    async def cover(self, within: float = 10.0) -> Cover | None:
        """Of the track that its track_index names, which is the current one unless that has changed meanwhile.

        None when the track has none, which only silence tells.
        """
        with self.inbox("ipodAlbumArtNotification") as inbox:
            if not (await self.getCurrentAlbumArtDelayed())["success"]:
                return None
            with contextlib.suppress(TimeoutError):
                async with asyncio.timeout(within):
                    return to_cover(await inbox.get())
        return None


def is_current(track: TrackInfo) -> bool:
    """False for what a trackInfoNotification carries while the player has stopped: empty texts, no times."""
    return bool(track["trackTitle"] or track["trackDuration"])


def _checked(request: Request) -> Request:
    if request.method not in METHODS:
        raise ValueError(f"the service has no method {request.method!r}")
    return request


def _known(names: Sequence[str]) -> None:
    if unknown := set(names) - NOTIFICATIONS:
        raise ValueError(f"the service has no notification {', '.join(sorted(unknown))}")


def _guarded(handler: Callable[[Any], None], value: object) -> None:
    """A handler's fault is told to the event loop and costs neither the others nor the connection."""
    try:
        handler(value)
    except Exception as error:
        asyncio.get_running_loop().call_exception_handler({"message": "a handler failed", "exception": error})
