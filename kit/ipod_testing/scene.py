"""A running service with a client and the player's control channel: what a scenario starts from."""

from __future__ import annotations

import asyncio
import contextlib
import time
from collections.abc import AsyncIterator, Awaitable, Callable
from pathlib import Path

from ipod_client import Client

from .build import Build
from .control import SimulatedPlayer
from .recorder import Recorder
from .service import CONTROL_SOCKET, Service
from .sound import SoundCard


class Scene:
    """`service` runs, `client` is connected to it, `heard` records what that is notified of; nothing is plugged in."""

    def __init__(self, build: Build, folder: Path) -> None:
        self.patience = build.patience
        self.sound = SoundCard(build, folder)
        self.environment = self.sound.environment() | {
            "DEVICE_SIMULATOR_CONTROL": str(CONTROL_SOCKET), "DEVICE_SIMULATOR_DEVICE": "none"}
        self.service = Service(build, self.environment)
        self.player = SimulatedPlayer(CONTROL_SOCKET)
        self.client = self.new_client()
        self.heard = self.recorder(self.client)

    def new_client(self) -> Client:
        """For `async with`: a second one sees what all see, and moves what all share."""
        return Client(patience=self.patience, retry=0.05)

    def recorder(self, client: Client) -> Recorder:
        return Recorder(client, self.patience)

    @contextlib.asynccontextmanager
    async def running(self) -> AsyncIterator[Scene]:
        """Ends with the service's end, in order unless the test has ended it; a sanitizer's finding fails."""
        self.service.start()
        try:
            async with self.client:
                await self.until(self.is_up)
                yield self
            if self.service.is_running():
                status = await self.service.stop()
                assert status == 0, self.service.errors
        finally:
            if self.service.is_running():
                await self.service.kill()
        assert "Sanitizer:" not in self.service.errors and "runtime error:" not in self.service.errors, \
            self.service.errors

    async def is_up(self) -> bool:
        return self.client.is_connected and self.service.is_up()

    async def until(self, condition: Callable[[], Awaitable[bool]]) -> None:
        """Asks again and again; AssertionError when it does not hold in time."""
        deadline = time.monotonic() + self.patience
        while not await condition():
            assert time.monotonic() < deadline, f"{condition.__qualname__} does not hold"
            await asyncio.sleep(0.01)

    async def plug_ready(self, **device: object) -> int:
        """Plugs a player in, an "iap" unless told otherwise, and waits until it can be browsed."""
        handle = await self.player.plug(**({"type": "iap"} | device))  # type: ignore[arg-type]
        async with asyncio.timeout(self.patience):
            await self.client.ready()
        return handle
