"""Everything that can go wrong on the way: a locked phone, calls that fail and dawdle, odd covers, a loose plug."""

import asyncio

import pytest

from ipod_client import Cover, ServiceError, to_cover
from ipod_testing import Scene

INTERNAL_ERROR = -32603


async def test_a_locked_phone_cannot_be_opened_until_it_is_unlocked(scene: Scene) -> None:
    since = await scene.player.next_call()
    await scene.player.plug("iap", locked=True)
    # Refused, and tried again.
    await scene.player.wait("eDevMgrOpenDevice", times=2, since=since)
    assert (await scene.player.calls("eDevMgrOpenDevice", since))[0]["result"] == 15
    assert scene.heard.names() == []
    await scene.player.unlock()
    await scene.heard.expect("ipodConnectionNotification", since=0, connected=True)
    await scene.client.ready()

    # Locked in the middle of a song, it plays on.
    await scene.client.playFirst()
    await scene.player.lock()
    mark = scene.heard.mark()
    assert await scene.client.next() == {"success": True}
    await scene.heard.expect("trackInfoNotification", since=mark, trackIndex=2)


async def test_calls_fail_and_work_again(scene: Scene) -> None:
    client, player = scene.client, scene.player
    await scene.plug_ready()
    await player.fail("eDevMgriPodPlay", code=54, times=1)
    assert await client.playFirst() == {"success": False}
    assert await client.playFirst() == {"success": True}
    await player.fail("eDevMgriPodPause", code=106, times=1)
    assert await client.pause() == {"success": False}
    assert await client.isTrackPaused() == {"isPaused": False}
    await player.busy("eDevMgriPodGetShuffleSetting", times=2)
    assert await client.isShuffleEnabled() == {"enabled": False}


async def test_an_answer_is_outstanding_while_the_user_goes_on(scene: Scene) -> None:
    client, player, heard = scene.client, scene.player, scene.heard
    await scene.plug_ready()
    await client.playFirst()
    since, mark = await player.next_call(), heard.mark()
    await player.delay("eDevMgriPodPlayNextPreviousTrack", milliseconds=600, times=1)
    answer = asyncio.create_task(client.next())
    await player.wait("eDevMgriPodPlayNextPreviousTrack", since=since)
    await player.thumb("pause")
    # The event's own thread tells of it; the answer still stands out.
    await heard.expect("trackPausedNotification", since=mark, isTrackPaused=True)
    assert not answer.done()
    assert await answer == {"success": True}
    await heard.expect("trackInfoNotification", since=mark, trackIndex=2)
    assert len(await player.calls("eDevMgriPodPlayNextPreviousTrack", since)) == 1


async def test_covers_of_every_kind(scene: Scene) -> None:
    client, player = scene.client, scene.player
    await scene.plug_ready()
    await client.playFirst()

    async def asked_for(variant: str) -> Cover | None:
        await player.command("artwork", variant=variant)
        return to_cover(await client.getCurrentAlbumArt())

    assert await asked_for("none") is None
    truncated, huge, limit = [await asked_for(variant) for variant in ("truncated", "huge", "limit")]
    assert truncated is not None and len(truncated.jpeg) > 700
    assert huge is not None and (huge.width, huge.height) == (100, 100)
    assert limit is not None and (limit.width, limit.height) == (320, 320)
    # Narrower than the 100 pixels that covers are shrunk to: refused at once, passed on as it stands later.
    for variant in ("not-jpeg", "narrow"):
        with pytest.raises(ServiceError) as refusal:
            await asked_for(variant)
        assert refusal.value.code == INTERNAL_ERROR
    narrow = await client.cover()
    assert narrow is not None and (narrow.width, narrow.height) == (90, 480)


async def test_a_loose_plug(scene: Scene) -> None:
    async def is_gone() -> bool:
        return not (await scene.client.isIpodConnected())["connected"]

    mark = scene.heard.mark()
    for _ in range(3):
        await scene.plug_ready()
        await scene.player.unplug()
        await scene.until(is_gone)
    # No more and no fewer, and in turn.
    assert [it["connected"] for it in scene.heard.of("ipodConnectionNotification", mark)] == [True, False] * 3
    await scene.plug_ready()
    assert await scene.client.playFirst() == {"success": True}
