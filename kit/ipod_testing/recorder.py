"""All that a client was notified of, in its order, and how to wait for what is to come."""

from __future__ import annotations

import asyncio
import time
from collections.abc import Callable
from typing import Any

from ipod_client import NOTIFICATIONS, Client, Notification


class Recorder:
    """Records from its making on. `mark()` before an action, `expect(..., since=mark)` after it: nothing is missed by
    timing, whatever came first. A name or a member that there is none of is a ValueError."""

    def __init__(self, client: Client, patience: float) -> None:
        self.all: list[Notification] = []
        self._patience = patience
        self._has_more = asyncio.Event()
        client.listen(self._add)

    def mark(self) -> int:
        return len(self.all)

    def names(self, since: int = 0) -> list[str]:
        return [it.name for it in self.all[since:]]

    def of(self, name: str, since: int = 0) -> list[dict[str, Any]]:
        """What those carry; of a trackInfoNotification the trackInfo itself."""
        if name not in NOTIFICATIONS:
            raise ValueError(f"the service has no notification {name!r}")
        return [it.params.get("trackInfo", it.params) for it in self.all[since:] if it.name == name]

    async def expect(self, name: str, condition: Callable[[dict[str, Any]], object] = lambda _: True, *,
                     since: int, **members: object) -> dict[str, Any]:
        """The first such notification since the mark; AssertionError, with what came, when there is none in time."""
        deadline = time.monotonic() + self._patience
        while True:
            self._has_more.clear()
            for params in self.of(name, since):
                if _has(params, members) and condition(params):
                    return params
            try:
                async with asyncio.timeout(deadline - time.monotonic()):
                    await self._has_more.wait()
            except TimeoutError:
                raise AssertionError(f"no such {name}; what came: {self.all[since:]}") from None

    def _add(self, notification: Notification) -> None:
        self.all.append(notification)
        self._has_more.set()


def _has(params: dict[str, Any], members: dict[str, object]) -> bool:
    if unknown := members.keys() - params.keys():
        raise ValueError(f"it has no {', '.join(sorted(unknown))}")
    return all(params[name] == value for name, value in members.items())
