"""A drive to work with one phone."""

from ipod_client import Listing, Request
from ipod_testing import Scene

SONGS = 32


async def test_commute(scene: Scene) -> None:
    client, player, heard = scene.client, scene.player, scene.heard
    await _phone_comes(scene)

    # The user looks around and chooses the first song.
    songs = Listing(client, (SONGS,))
    assert await songs.count() >= 3 and await songs.is_last()
    assert await client.start() == "success"
    mark = heard.mark()
    first, *_ = await songs.items()
    assert await songs.open(first) is None
    await heard.expect("trackInfoNotification", since=mark, trackIndex=1)
    await heard.expect("trackTimeNotification", lambda it: it["trackTime"] > 0, since=mark)

    # A song plays to its end, the next one begins by itself.
    mark = heard.mark()
    await player.thumb("seek", left=300)
    await heard.expect("trackInfoNotification", since=mark, trackIndex=2)
    await player.settings(repeat="one")

    await _buttons(scene)
    await _cover(scene)
    await _tunnel(scene)

    # Arrived.
    assert await client.stop() == "success"
    mark = heard.mark()
    await player.unplug()
    await heard.expect("ipodConnectionNotification", since=mark, connected=False)
    assert await client.isIpodConnected() == {"connected": False}


async def _phone_comes(scene: Scene) -> None:
    mark = scene.heard.mark()
    handle = await scene.plug_ready(type="iap2", name="Anna's phone")
    assert scene.heard.of("ipodConnectionNotification", mark) == [{"connected": True}], "told once"
    assert (await scene.client.getHasPlayableData()) == {"hasPlayableData": True}
    phone = await scene.player.device(handle)
    assert (phone["database"], phone["openings"]) == (100, 1)


async def _buttons(scene: Scene) -> None:
    """One on the wheel, a thumb on the phone."""
    client, player, heard = scene.client, scene.player, scene.heard
    mark = heard.mark()
    assert await client.next() == {"success": True}
    await heard.expect("trackInfoNotification", since=mark, trackIndex=3)
    mark = heard.mark()
    await player.queue(position=1)
    await heard.expect("trackInfoNotification", since=mark, trackIndex=2)
    mark = heard.mark()
    assert await client.pause() == {"success": True}
    await heard.expect("trackPausedNotification", since=mark, isTrackPaused=True)
    assert await client.isTrackPaused() == {"isPaused": True}
    mark = heard.mark()
    await player.thumb("play")
    await heard.expect("trackPausedNotification", since=mark, isTrackPaused=False)
    assert await client.isTrackPaused() == {"isPaused": False}


async def _cover(scene: Scene) -> None:
    await scene.player.artwork("limit")
    cover = await scene.client.cover()
    assert cover is not None and (cover.width, cover.height) == (320, 320)
    assert cover.jpeg.startswith(b"\xff\xd8") and cover.jpeg.endswith(b"\xff\xd9")


async def _tunnel(scene: Scene) -> None:
    """The phone is busy, and its sound is gone."""
    client, player, heard = scene.client, scene.player, scene.heard
    await player.sound(capture="gone")
    since = await player.next_call()
    await player.busy("eDevMgriPodGetPlayStatus", times=3)
    assert await client.isTrackPaused() == {"isPaused": False}
    results = [call["result"] for call in await player.calls("eDevMgriPodGetPlayStatus", since)]
    assert results[:4] == [94, 94, 94, 1]
    assert await client.start() == "failure", "the stream that has lost its card stands until it is stopped"
    await player.sound(capture="there")
    mark = heard.mark()
    replies = await client.batch(Request("stop"), Request("start"))
    assert [reply.value() for reply in replies] == ["success", "success"]
    await heard.expect("trackTimeNotification", lambda it: it["trackTime"] > 0, since=mark)
