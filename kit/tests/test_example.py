"""The example's view model over a running service, and the program as a user starts it."""

import asyncio
import re
import sys
import textwrap
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pytest

from examples.interface import ROWS, ViewModel
from ipod_testing import Scene
from ipod_testing.build import SOURCE

EXAMPLE = Path(__file__).parents[1] / "examples/interface.py"
ARTISTS = "Artists"


async def test_the_view_model_follows_the_player(scene: Scene) -> None:
    async with scene.new_client() as client:
        model = ViewModel(client)
        await _until(scene, lambda: model.link == "no player")
        await scene.player.plug("iap2")
        await _until(scene, lambda: model.link == "ready")
        assert ARTISTS in [item.name for item in model.rows]

        await model.choose([item.name for item in model.rows].index("Songs"))
        assert len(model.rows) == ROWS and model.listing is not None
        seen = {item.item_id for item in model.rows}
        await model.scroll(ROWS)
        assert model.top == ROWS and not seen & {item.item_id for item in model.rows}
        await model.jump()
        assert model.top > ROWS
        await model.filter("water")
        assert model.rows and all("water" in item.name.lower() for item in model.rows)
        wanted = model.rows[0].name

        await model.choose(0)
        await _until(scene, lambda: model.track is not None and model.track["trackTitle"] == wanted)
        await _until(scene, lambda: model.cover is not None and model.position > 0)
        await scene.player.thumb("pause")
        await _until(scene, lambda: model.is_paused)
        await scene.player.thumb("play")
        before = model.position
        await _until(scene, lambda: not model.is_paused and model.position > before)
        await scene.player.thumb("stop")  # of which nothing tells
        await _until(scene, lambda: model.track is None)
        await scene.player.unplug()
        await _until(scene, lambda: model.link == "no player" and model.track is None and not model.rows)


async def test_the_program_shows_what_plays(scene: Scene) -> None:
    await scene.plug_ready()
    await scene.client.playFirst()
    process = await asyncio.create_subprocess_exec(
        sys.executable, "-u", EXAMPLE, stdin=asyncio.subprocess.PIPE, stdout=asyncio.subprocess.PIPE)
    assert process.stdin is not None and process.stdout is not None
    shown = b""
    async with asyncio.timeout(scene.patience):
        while b"[ready]" not in shown or b"cover of" not in shown:
            shown += await process.stdout.readline()
        process.stdin.write(b"next\n")
        while b"playing 2/" not in shown:
            shown += await process.stdout.readline()
        process.stdin.close()
        await process.wait()
    assert process.returncode == 0


async def test_the_pages_samples_run(scene: Scene, capsys: pytest.CaptureFixture[str]) -> None:
    """Those of docs/kit.md, as they stand there: one for a running player, one a test."""
    use, scenario = re.findall(r"```python\n(.*?)```", (SOURCE / "docs/kit.md").read_text(), re.DOTALL)
    names: dict[str, Any] = {}
    exec(scenario, names)
    await names["test_a_thumb_on_the_phone_is_told"](scene)
    exec("from ipod_client import *\nasync def use():\n" + textwrap.indent(use, "    "), names)
    await names["use"]()
    assert "water" in capsys.readouterr().out.lower()


async def _until(scene: Scene, condition: Callable[[], bool]) -> None:
    async def holds() -> bool:
        return condition()
    await scene.until(holds)
