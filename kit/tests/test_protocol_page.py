"""docs/protocol.md: every exchange in it is held as it stands there, and its tables say what docs/openrpc.json says."""

from __future__ import annotations

import asyncio
import json
import re
import shlex
from collections.abc import Iterator
from dataclasses import dataclass
from typing import Any

import pytest

from ipod_client import Request
from ipod_client.client import PORT
from ipod_testing import Scene
from ipod_testing.build import SOURCE

PAGE = (SOURCE / "docs/protocol.md").read_text()
CONTRACT: dict[str, Any] = json.loads((SOURCE / "docs/openrpc.json").read_text())
LONGEST_LINE = 1 << 24


@dataclass(frozen=True)
class Block:
    line: int
    steps: list[str]

    @property
    def methods(self) -> set[str]:
        return {name for step in self.steps if step.startswith(">") for name in re.findall('"method":"(\\w+)"', step)}


def blocks() -> Iterator[Block]:
    for fence in re.finditer(r"^```\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL):
        yield Block(PAGE.count("\n", 0, fence.start()) + 1, fence[1].splitlines())


class Exchange:
    """A connection whose answers and notifications are waited for apart: the order of the two is not promised."""

    def __init__(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter, patience: float) -> None:
        self._reader = reader
        self._writer = writer
        self._patience = patience
        self._answers: list[str] = []
        self._notifications: list[str] = []

    def send(self, text: str) -> None:
        self._writer.write(text.encode() + b"\n")

    async def receive(self, shown: str) -> None:
        """An answer has to be the next one; notifications that are not shown may come in between."""
        kept = self._notifications if '"method":"' in shown else self._answers
        passed: list[str] = []
        try:
            async with asyncio.timeout(self._patience):
                while not matches(shown, came := await self._next(kept)):
                    passed.append(came[:1000])
                    assert kept is self._notifications, f"{passed}\ncame for\n{shown}"
        except TimeoutError:
            raise AssertionError(f"{passed}\ncame for\n{shown}") from None

    async def end(self) -> None:
        """All answers have been shown."""
        self._writer.write_eof()
        async with asyncio.timeout(self._patience):
            while line := await self._reader.readline():
                self._keep(line.decode())
        assert not self._answers

    async def _next(self, kept: list[str]) -> str:
        while not kept:
            line = await self._reader.readline()
            assert line, "the service has hung up"
            self._keep(line.decode())
        return kept.pop(0)

    def _keep(self, line: str) -> None:
        (self._notifications if '"method":"' in line else self._answers).append(line.rstrip("\n"))


def matches(shown: str, line: str) -> bool:
    return re.fullmatch(".+".join(map(re.escape, shown.split("…"))), line) is not None


async def order(scene: Scene, words: str) -> None:
    """`ipodsim send COMMAND member=value ...`"""
    program, send, command, *members = shlex.split(words)
    assert (program, send) == ("ipodsim", "send")
    values = dict(member.split("=", 1) for member in members)
    await scene.player.command(command, **{name: json_or_text(value) for name, value in values.items()})


def json_or_text(value: str) -> object:
    try:
        return json.loads(value)
    except ValueError:
        return value


async def hold(scene: Scene, block: Block) -> None:
    reader, writer = await asyncio.open_connection("127.0.0.1", PORT, limit=LONGEST_LINE)
    exchange = Exchange(reader, writer, scene.patience)
    exchange.send('{"jsonrpc":"2.0","method":"isIpodConnected","id":0}')
    await exchange.receive('{"id":0,"jsonrpc":"2.0","result":{"connected":true}}')
    for step in block.steps:
        sign, text = step.split(" ", 1)
        match sign:
            case "$":
                await order(scene, text)
            case ">":
                exchange.send(text)
            case "<":
                await exchange.receive(text)
            case _:
                raise ValueError(step)
    await exchange.end()
    writer.close()


@pytest.mark.parametrize("block", blocks(), ids=lambda block: f"line-{block.line}")
async def test_the_exchange_goes_as_it_stands(bare_scene: Scene, block: Block) -> None:
    async with bare_scene.running() as scene:
        await scene.plug_ready()
        await hold(scene, block)
        if "exit" in block.methods:
            assert await scene.service.stop() == 1


def test_every_method_and_notification_is_shown() -> None:
    assert {method["name"] for method in CONTRACT["methods"]} <= set().union(*(block.methods for block in blocks()))
    shown = {step.split('"method":"')[-1].split('"')[0] for block in blocks() for step in block.steps if step[0] == "<"}
    assert {notification["name"] for notification in CONTRACT["x-notifications"]} <= shown


def tables() -> Iterator[tuple[str, list[str], list[list[str]]]]:
    """Of each table: the chapter that it stands in, its head and its rows."""
    chapter = ""
    for piece in re.finditer(r"^## (.*)$|^(\|.*\|\n)\|[-|]+\|\n((?:\|.*\|\n)+)", PAGE, re.MULTILINE):
        chapter = piece[1] or chapter
        if piece[2]:
            yield chapter, cells(piece[2]), [cells(row) for row in piece[3].splitlines()]


def cells(row: str) -> list[str]:
    return [cell.strip() for cell in row.strip().strip("|").split("|")]


def resolved(schema: dict[str, Any]) -> dict[str, Any]:
    while "$ref" in schema:
        schema = CONTRACT["components"]["schemas"][schema["$ref"].split("/")[-1]]
    return schema


def what_a_result_shows(schema: dict[str, Any]) -> set[str]:
    """How its members and words are written."""
    schema = resolved(schema)
    parts = [part for part in schema.get("oneOf", ()) if part != {"type": "null"}]
    words = {f'`"{word}"`' for word in schema.get("enum", ())} | {f'"{name}":' for name in schema.get("properties", ())}
    return words.union(*map(what_a_result_shows, parts))


def test_its_tables_of_methods_say_what_the_contract_says() -> None:
    methods = {method["name"]: method for method in CONTRACT["methods"]}
    told = []
    for chapter, head, rows in tables():
        for names, params, result in rows if head == ["Method", "Params", "Result"] else ():
            for name in re.findall(r"`(\w+)`", names):
                method = methods[name]
                told.append(name)
                assert chapter == method["tags"][0]["name"]
                assert set(re.findall(r"`(\w+)`", params)) == {param["name"] for param in method["params"]}, name
                assert all(word in result for word in what_a_result_shows(method["result"]["schema"])), name
                assert ("no `result`" in result) == ("x-result-missing" in method), name
    assert sorted(told) == sorted(methods)


def test_its_other_tables_say_what_the_contract_says() -> None:
    heads = ["Notification", "Params"], ["Code", "Message"]
    found = {chapter: rows for chapter, head, rows in tables() if head[:2] in heads}
    assert {row[0].strip("`"): set(re.findall(r"`(\w+)`", row[1])) for row in found["Notifications"]} == {
        it["name"]: set(resolved(it["params"])["properties"]) for it in CONTRACT["x-notifications"]}
    assert {(int(row[0]), row[1].strip("`")) for row in found["Errors"]} == {
        (error["code"], error["message"]) for error in CONTRACT["components"]["errors"].values()}


def test_its_limits_are_the_contracts() -> None:
    table, = [rows for chapter, _, rows in tables() if chapter == "Limits"]
    shown = {figure for row in table for figure in re.findall(r"[\d,]+(?: [KM]iB| s(?=\W|$))?", row[1])}
    limits = CONTRACT["x-transport"]["limits"].items()
    assert shown >= {written(name, limit) for name, limit in limits if "Turn" not in name}


def written(name: str, limit: int) -> str:
    if "Seconds" in name:
        return f"{limit} s"
    if "ytes" not in name:
        return f"{limit:,}" if limit > 9999 else str(limit)
    return f"{limit >> 20} MiB" if limit >= 1 << 20 else f"{limit >> 10} KiB"


STATE_METHODS = ["isIpodConnected", "getBrowseList", "resetBrowseList", "isTrackPaused", "getCurrentTrackInfo"]


def state_table() -> dict[str, list[str]]:
    """By the state's first word."""
    rows, = [rows for _, head, rows in tables() if head[0] == "" and head[1] == "`isIpodConnected`"]
    return {re.split(r"\W", row[0])[0]: row[1:] for row in rows}


async def reach(scene: Scene, state: str) -> None:
    if state == "no":
        return
    await scene.player.plug("iap2" if state == "late" else "iap")
    if state == "empty":
        await scene.player.wait("eDevMgriPodOpenMdBrowseSession")
    elif state != "late":
        await scene.client.ready()
    if state in ("paused", "playing"):
        await scene.player.thumb("play")
    if state == "paused":
        await scene.player.thumb("pause")

    async def is_connected() -> bool:
        return (await scene.client.isIpodConnected())["connected"]
    await scene.until(is_connected)


@pytest.mark.parametrize("state, row", state_table().items())
async def test_the_states_can_be_told_apart_as_its_table_says(bare_scene: Scene, state: str, row: list[str]) -> None:
    bare_scene.environment |= {"DEVICE_SIMULATOR_TRACKS": "0"} if state == "empty" else {}
    async with bare_scene.running() as scene:
        await reach(scene, state)
        mark = scene.heard.mark()
        # At once: the database of one that is late is soon there.
        replies = await scene.client.batch(*map(Request, STATE_METHODS))
        connected, page, reset, paused, _ = (reply.value() for reply in replies)
        supported = any(item["isSupported"] for item in page["categoryItems"])
        track = await scene.heard.expect("trackInfoNotification", since=mark)
        shown = [connected["connected"], "some true" if supported else "all false", reset["resetSuccess"],
                 paused["isPaused"], track["isPlaying"]]
        assert [str(it).lower() for it in shown] == row
