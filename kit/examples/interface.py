#!/usr/bin/env python3
"""A whole user interface without its pictures: a view model that follows the player, and a shell to lead it by.

    python3 kit/examples/interface.py [HOST]

Everything a screen would show is in ViewModel; `changed` is called whenever a part of it is another.
"""

from __future__ import annotations

import asyncio
import contextlib
import sys
from collections.abc import Callable, Coroutine
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

from ipod_client import (BrowseFailed, Client, ConnectionLost, Cover, ListItem, Listing,  # noqa: E402
                         ServiceError, TrackInfo, is_current)

ROWS = 8
SILENCE = 2.5
"""Seconds without a track's time, which comes once a second."""


@dataclass
class ViewModel:
    """Attach it to a client before that is entered. `link` is "no service", "no player", "wait" or "ready"."""

    client: Client
    changed: Callable[[str], None] = lambda _: None
    link: str = "no service"
    track: TrackInfo | None = None
    position: int = 0
    """Of the track, in ms."""
    is_paused: bool = False
    cover: Cover | None = None
    listing: Listing | None = None
    rows: list[ListItem] = field(default_factory=list)
    top: int = 0
    """The first row's place in the list."""
    _work: dict[str, asyncio.Task[None]] = field(default_factory=dict)

    def __post_init__(self) -> None:
        self.client.on("ipodConnectionNotification", lambda told: self._restart())
        self.client.on("trackInfoNotification", lambda told: self._take_track(told["trackInfo"]))
        self.client.on("trackTimeNotification", lambda told: self._take_time(told["trackTime"]))
        self.client.on("trackPausedNotification", lambda told: self._take_pause(told["isTrackPaused"]))
        self.client.on_link(lambda is_up: self._restart())

    # What the service tells

    def _take_track(self, track: TrackInfo) -> None:
        """The same track may be told of again, for instance because another interface has asked."""
        is_other = self.track is None or name_of(self.track) != name_of(track)
        self._set(track=track if is_current(track) else None, position=track["trackTime"])
        self._start("silence", self._doubt)
        if is_other:
            self._set(cover=None)
            self._start("cover", self._fetch_cover)

    def _take_time(self, position: int) -> None:
        self._set(position=position)
        self._start("silence", self._doubt)

    def _take_pause(self, is_paused: bool) -> None:
        self._set(is_paused=is_paused)
        self._start("silence", self._doubt)

    async def _doubt(self) -> None:
        """Nothing tells of a stop, so it is asked for once the time stands still; the notification answers."""
        await asyncio.sleep(SILENCE)
        if self.track is not None and not self.is_paused:
            await self.client.getCurrentTrackInfo()

    # What it asks for

    def _restart(self) -> None:
        """Whatever was known is known no more: the service or the player has come, or gone."""
        self._set(link="wait" if self.client.is_connected else "no service", track=None, position=0, is_paused=False,
                  cover=None, listing=None, rows=[], top=0)
        self._start("state", self._fetch_state)

    async def _fetch_state(self) -> None:
        if not (await self.client.isIpodConnected())["connected"]:
            self._set(link="no player")
            return
        await self.client.ready()
        self._set(is_paused=(await self.client.isTrackPaused())["isPaused"])
        # The notification that follows carries what its answer does not.
        await self.client.getCurrentTrackInfo()
        await self.show(Listing(self.client))
        self._set(link="ready")

    async def _fetch_cover(self) -> None:
        cover = await self.client.cover()
        if cover is None or (self.track and cover.track_index == self.track["trackIndex"]):  # else of one before
            self._set(cover=cover)

    # What the user does

    async def show(self, listing: Listing, top: int = 0) -> None:
        """Only what is on the screen is fetched."""
        rows = await listing.items(top, ROWS)
        self._set(listing=listing, top=top, rows=rows)

    async def scroll(self, rows: int) -> None:
        if self.listing is not None:
            last = max(0, await self.listing.count() - ROWS)
            await self.show(self.listing, min(max(0, self.top + rows), last))

    async def choose(self, row: int) -> None:
        """Opens the row's list, or plays the row."""
        if self.listing is not None and 0 <= row < len(self.rows):
            below = await self.listing.open(self.rows[row])
            if below is not None:
                await self.show(below)

    async def back(self) -> None:
        if self.listing is not None:
            await self.show(self.listing.parent())

    async def filter(self, text: str) -> None:
        if self.listing is not None and self.listing.path:
            await self.show(self.listing.filtered(text))

    async def jump(self) -> None:
        """To the next initial letter."""
        if self.listing is not None and self.listing.path and not self.listing.filter_text:
            await self.show(self.listing, await self.listing.next_letter(self.top))

    # Within

    def _set(self, **parts: Any) -> None:
        for name, value in parts.items():
            if getattr(self, name) != value:
                setattr(self, name, value)
                self.changed(name)

    def _start(self, name: str, work: Callable[[], Coroutine[Any, Any, None]]) -> None:
        """Takes the place of what was begun under that name; a player or service that goes ends it."""
        if name in self._work:
            self._work[name].cancel()

        async def guarded() -> None:
            with contextlib.suppress(ConnectionLost, BrowseFailed, ServiceError, TimeoutError):
                await work()

        self._work[name] = asyncio.create_task(guarded())


def name_of(track: TrackInfo) -> tuple[object, ...]:
    return track["trackTitle"], track["trackAlbum"], track["trackArtist"], track["trackIndex"]


def describe(model: ViewModel) -> str:
    lines = [f"[{model.link}]"]
    if model.track is not None:
        state = "paused" if model.is_paused else "playing"
        cover = f", cover of {len(model.cover.jpeg)} bytes" if model.cover else ""
        lines.append(f"{state} {model.track['trackIndex']}/{model.track['trackCount']} {model.track['trackTitle']}"
                     f" - {model.track['trackArtist']}, {model.position // 1000} s{cover}")
    return "\n".join(lines + [f"  {row} {item.name}" for row, item in enumerate(model.rows)])


async def carry_out(model: ViewModel, line: str) -> None:
    word, _, rest = line.strip().partition(" ")
    match word:
        case "up" | "down":
            await model.scroll(ROWS if word == "down" else -ROWS)
        case "back" | "jump":
            await (model.back() if word == "back" else model.jump())
        case "find":
            await model.filter(rest)
        case "next" | "previous" | "playPause":
            await model.client.call(word)
        case _ if word.isdigit():
            await model.choose(int(word))
        case _:
            print("NUMBER, up, down, back, jump, find TEXT, next, previous, playPause")


async def main() -> None:
    client = Client(sys.argv[1] if len(sys.argv) > 1 else "127.0.0.1")
    model = ViewModel(client)
    model.changed = lambda part: None if part == "position" else print(describe(model))
    async with client:
        while line := await asyncio.to_thread(sys.stdin.readline):
            try:
                await carry_out(model, line)
            except (ConnectionLost, BrowseFailed, ServiceError, TimeoutError) as error:
                print(error)


if __name__ == "__main__":
    asyncio.run(main())
