"""Two phones on a hub: the service stays with one, and goes on to the other when that one leaves."""

import asyncio

from ipod_testing import Scene

HUB, ANNA, BEN, CARLA = 20, 21, 22, 23


async def test_two_phones(scene: Scene) -> None:
    client, player, heard = scene.client, scene.player, scene.heard
    await player.plug_all({"type": "hub", "handle": HUB},
                          {"type": "iap2", "handle": ANNA, "hub": HUB, "name": "Anna's"},
                          {"type": "iap", "handle": BEN, "hub": HUB, "name": "Ben's"})
    await client.ready()
    assert (await player.device(ANNA))["openings"] == 1 and (await player.device(BEN))["openings"] == 0

    # Anna's phone plays; Ben takes his along, of which nobody is told.
    await player.command("player", handle=ANNA, repeat="one")
    mark = heard.mark()
    assert await client.playFirst() == {"success": True}
    await heard.expect("trackInfoNotification", since=mark, trackIndex=1)
    mark = heard.mark()
    await player.unplug(BEN)
    await heard.expect("trackTimeNotification", lambda it: it["trackTime"] > 1000, since=mark)
    assert "ipodConnectionNotification" not in heard.names(mark)
    assert (await player.device(ANNA))["player"]["state"] == "playing"

    # Carla's phone comes; Anna leaves, Carla's is taken: gone and there, once each and in this order.
    mark = heard.mark()
    await player.plug("iap", handle=CARLA, hub=HUB, name="Carla's")
    await player.unplug(ANNA)
    await heard.expect("ipodConnectionNotification", since=mark, connected=True)
    async with asyncio.timeout(scene.patience):
        await client.ready()
    assert heard.of("ipodConnectionNotification", mark) == [{"connected": False}, {"connected": True}]
    assert (await player.device(CARLA))["openings"] == 1

    # Carla's phone plays two songs of her own choice.
    await player.settings(repeat="one")
    mark = heard.mark()
    await player.queue(tracks=[2, 0], position=0)
    await heard.expect("trackInfoNotification", since=mark, trackIndex=1, trackCount=2)
    mark = heard.mark()
    await player.thumb("next")
    await heard.expect("trackInfoNotification", since=mark, trackIndex=2, trackCount=2)

    # The hub is pulled out with all that hangs on it.
    mark = heard.mark()
    await player.unplug(HUB)
    await heard.expect("ipodConnectionNotification", since=mark, connected=False)
    assert await player.command("devices") == {"devices": []}
    assert await client.isIpodConnected() == {"connected": False}
