"""The simulated player's control channel: a line of JSON out, a line of JSON in. docs/simulator.md has the commands."""

from __future__ import annotations

import asyncio
import json
from pathlib import Path
from typing import Any, Literal

LONGEST_ANSWER = 64 << 20

DeviceType = Literal["iap2", "iap", "stick", "mtp", "unknown", "hub", "no-medium", "unsupported"]
ArtworkVariant = Literal["as-is", "none", "truncated", "not-jpeg", "narrow", "huge", "limit"]
Thumb = Literal["play", "pause", "toggle", "stop", "next", "previous", "forward", "rewind", "release", "seek"]
Presence = Literal["gone", "there"]


class Refused(Exception):
    """The player's own words for what is wrong with a command, which changed nothing."""


class SimulatedPlayer:
    """Members that are None are left out. Each command has a connection of its own, so a `wait` holds up no other."""

    def __init__(self, path: Path) -> None:
        self._path = path

    async def command(self, command: str, **members: object) -> dict[str, Any]:
        """Any command. Raises Refused, and OSError when there is no player."""
        given = {name: value for name, value in members.items() if value is not None}
        reader, writer = await asyncio.open_unix_connection(self._path, limit=LONGEST_ANSWER)
        try:
            writer.write(json.dumps({"command": command} | given).encode() + b"\n")
            line = await reader.readline()
        finally:
            writer.close()
        if not line:
            raise ConnectionResetError("the simulated player has closed the connection")
        answer: dict[str, Any] = json.loads(line)
        if not answer.pop("ok"):
            raise Refused(answer["error"])
        return answer

    # Devices

    async def plug(self, type: DeviceType | int = "iap2", *, name: str | None = None, handle: int | None = None,
                   hub: int | None = None, locked: bool | None = None, **more: object) -> int:
        """The new device's handle."""
        answer = await self.command("plug", type=type, name=name, handle=handle, hub=hub, locked=locked, **more)
        return int(answer["handle"])

    async def plug_all(self, *devices: dict[str, object]) -> list[int]:
        return list((await self.command("plug", devices=devices))["handles"])

    async def unplug(self, handle: int | None = None) -> None:
        """Without a handle: the only one that is plugged in."""
        await self.command("unplug", handle=handle)

    async def unplug_all(self) -> None:
        await self.command("unplug", all=True)

    async def lock(self, handle: int | None = None) -> None:
        await self.command("lock", handle=handle)

    async def unlock(self, handle: int | None = None) -> None:
        await self.command("unlock", handle=handle)

    async def status(self) -> dict[str, Any]:
        return await self.command("status")

    async def device(self, handle: int | None = None) -> dict[str, Any]:
        """What `status` tells of it; without a handle, of the only one. Raises ValueError when there is none such."""
        wanted: dict[str, Any]
        wanted, = [it for it in (await self.status())["devices"] if handle in (None, it["handle"])]
        return wanted

    async def sound(self, *, capture: Presence | None = None, playback: Presence | None = None) -> dict[str, Presence]:
        return dict((await self.command("sound", capture=capture, playback=playback))["sound"])

    # The player

    async def thumb(self, do: Thumb, *, to: int | None = None, left: int | None = None) -> None:
        """What the user does on the player itself; `to` and `left` in ms, for a seek."""
        await self.command("player", do=do, to=to, left=left)

    async def settings(self, *, repeat: Literal["off", "one", "all"] | None = None,
                       shuffle: Literal["off", "tracks", "albums"] | None = None) -> None:
        await self.command("player", repeat=repeat, shuffle=shuffle)

    async def queue(self, *, tracks: list[int | str] | None = None, position: int | None = None,
                    start: int | None = None, count: int | None = None) -> dict[str, Any]:
        return await self.command("queue", tracks=tracks, position=position, start=start, count=count)

    # Calls and events

    async def fail(self, call: str, code: int, times: int | None = None) -> None:
        await self.command("fail", call=call, code=code, times=times)

    async def busy(self, call: str, times: int | None = None) -> None:
        await self.command("busy", call=call, times=times)

    async def delay(self, call: str, milliseconds: int, times: int | None = None) -> None:
        await self.command("delay", call=call, milliseconds=milliseconds, times=times)

    async def artwork(self, variant: ArtworkVariant | None = None, *, in_progress: int | None = None) -> None:
        await self.command("artwork", variant=variant, inProgress=in_progress)

    async def event(self, name: str, *words: int, texts: list[str] | None = None) -> None:
        await self.command("event", name=name, words=list(words), texts=texts)

    async def calls(self, call: str | None = None, since: int | None = None) -> list[dict[str, Any]]:
        """What the device manager was called for, oldest first."""
        return list((await self.command("calls", call=call, since=since))["calls"])

    async def next_call(self) -> int:
        """The number that the next call will have, for `since`."""
        return int((await self.command("calls", limit=0))["next"])

    async def wait(self, call: str, times: int | None = None, since: int | None = None, timeout: int = 30_000) -> None:
        """Until it has begun so often."""
        await self.command("wait", call=call, times=times, since=since, timeout=timeout)

    async def clear(self, what: Literal["calls", "scripts"] | None = None) -> None:
        await self.command("clear", what=what)
