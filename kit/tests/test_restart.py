"""A service that goes in the middle of a song and comes again."""

import functools

import pytest

from ipod_client import Listing
from ipod_testing import Scene

SONGS = 32


@pytest.mark.parametrize("is_killed", [False, True])
async def test_a_service_update_under_a_playing_phone(bare_scene: Scene, is_killed: bool) -> None:
    sound = bare_scene.sound
    sound.make_tone("1.flac", 500)
    sound.make_tone("2.flac", 700)
    bare_scene.environment |= sound.music_environment()
    with bare_scene.service.staying_player():
        async with bare_scene.running() as scene:
            await scene.plug_ready(type="iap2")
            await scene.client.start()
            await scene.client.playFirst()
            await scene.client.next()
            await sound.hear(700)
            before = await scene.client.current_track()
            await (scene.service.kill() if is_killed else scene.service.stop())
            await scene.until(functools.partial(_is_closed, scene))
            phone = (await scene.player.device())["player"]
            assert (phone["state"], phone["position"]) == ("playing" if is_killed else "paused", 1)

            scene.service.start()
            await scene.until(scene.is_up)
            await scene.client.ready()
            after = await scene.client.current_track()
            assert before is not None and after is not None
            assert (after["trackTitle"], after["trackIndex"]) == (before["trackTitle"], before["trackIndex"])
            assert await Listing(scene.client, (SONGS,)).count() == 2
            now = after["trackTime"]
            assert now >= phone["elapsed"]
            mark = scene.heard.mark()
            if not is_killed:
                assert await scene.client.play() == {"success": True}
            assert await scene.client.start() == "success"
            await scene.heard.expect("trackTimeNotification", lambda it: it["trackTime"] > now, since=mark)
            await sound.hear(700)


async def _is_closed(scene: Scene) -> bool:
    return bool((await scene.player.device())["openings"] == 0)
