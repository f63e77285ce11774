"""ipodsim send, as a shell uses it."""

import asyncio
import json
from pathlib import Path

from ipod_testing import Scene
from ipod_testing.build import Build
from ipod_testing.service import CONTROL_SOCKET


async def test_words_make_a_command_and_the_status_tells(build: Build, scene: Scene, tmp_path: Path) -> None:
    async def send(*words: str, control: Path = CONTROL_SOCKET) -> tuple[int | None, str, str]:
        process = await asyncio.create_subprocess_exec(
            build.send_command, "send", *words, "--control", control, stdout=asyncio.subprocess.PIPE,
            stderr=asyncio.subprocess.PIPE)
        out, errors = await process.communicate()
        return process.returncode, out.decode(), errors.decode()

    status, out, _ = await send("plug", "type=iap", "name=Zoë's = 1", "handle=7")
    assert (status, json.loads(out)) == (0, {"handle": 7, "ok": True})
    assert (await scene.player.device(7))["name"] == "Zoë's = 1"
    assert await send('{"command":"devices","handle":1}') == (
        1, '{"error":"\\"handle\\" is no member of this","ok":false}\n', "")
    assert await send("plug", "iap") == (2, "", 'ipodsim: "iap" is not name=value\n')
    assert await send("{}x") == (2, "", "ipodsim: this is no JSON object\n")
    nowhere = tmp_path / "nowhere"
    assert await send("status", "--wait", "0.1", control=nowhere) == (
        3, "", f"ipodsim: {nowhere} is no control socket that answers: No such file or directory\n")

    # It may be there before the player is, and stay for as long as a command takes.
    async def answer(reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
        lines.append(await reader.readline())
        writer.write(b"no JSON\n")
        writer.close()

    lines: list[bytes] = []
    waiting = asyncio.create_task(send("status", "--wait", "60", control=nowhere))
    await asyncio.sleep(0)
    async with await asyncio.start_unix_server(answer, nowhere):
        assert await waiting == (3, "", f"ipodsim: {nowhere} does not answer as a control socket does\n")
    assert lines == [b'{"command":"status"}\n']
