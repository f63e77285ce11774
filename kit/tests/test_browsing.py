"""Lists, as several interfaces walk through them at once."""

import asyncio
import random

import pytest

from ipod_client import BrowseFailed, Listing, ListItem
from ipod_client.browsing import PAGE
from ipod_testing import Scene

ARTISTS, ALBUMS, SONGS = 4, 8, 32


async def test_a_list_is_fetched_by_pages_and_once(scene: Scene) -> None:
    await scene.plug_ready()
    songs = Listing(scene.client, (SONGS,))
    count = await songs.count()
    await scene.client.resetBrowseList()
    whole = await scene.client.getSongList()
    assert whole is not None and count == len(whole["categoryItems"]) > 3 * PAGE
    near_the_end = await songs.items(count - 3, 10)
    assert [item.item_id for item in near_the_end] == [it["itemId"] for it in whole["categoryItems"][-3:]]
    since = await scene.player.next_call()
    assert await songs.items(count - 3, 10) == near_the_end
    assert await scene.player.calls(since=since) == [], "kept"
    every = await songs.items(0, count)
    assert [item.name for item in every] == [it["itemName"] for it in whole["categoryItems"]]
    at = await songs.next_letter(count // 2)
    assert every[at].name[0] != every[at - 1].name[0]
    assert await songs.previous_letter(at) < at

    found = songs.filtered("WATER")
    assert [item.name for item in await found.items()] == [it.name for it in every if "water" in it.name.lower()]
    assert await songs.filtered("no such name").items() == []
    with pytest.raises(ValueError):
        await found.next_letter(0)
    with pytest.raises(BrowseFailed):
        await Listing(scene.client, (SONGS + 1,)).items()


async def test_interfaces_do_not_land_in_each_others_lists(scene: Scene) -> None:
    """Four walk at random; each list has the items that it has for one who walks alone."""
    await scene.plug_ready()
    known = {path: await Listing(scene.client, path).items(0, 10)
             for path in [(ARTISTS,), (ALBUMS,), (ARTISTS, 3), (ALBUMS, 7), (ARTISTS, 3, 0), ()]}

    async def walk(seed: int) -> int:
        choose = random.Random(seed)
        async with scene.new_client() as client:
            await client.connected()
            for _ in range(50):
                path = choose.choice(list(known))
                assert await Listing(client, path).items(0, 10) == known[path]
        return seed

    assert await asyncio.gather(*map(walk, range(4))) == list(range(4))


async def test_what_is_chosen_plays_with_its_list_as_the_queue(scene: Scene) -> None:
    await scene.plug_ready()
    albums = Listing(scene.client, (ALBUMS,))
    album = await albums.open((await albums.items())[7])
    assert album is not None and album.parent().path == albums.path
    tracks = await album.items()
    mark = scene.heard.mark()
    assert await album.open(tracks[-1]) is None
    told = await scene.heard.expect("trackInfoNotification", since=mark, trackTitle=tracks[-1].name)
    assert (told["trackIndex"], told["trackCount"]) == (len(tracks), len(tracks))
    with pytest.raises(BrowseFailed):
        await album.open(ListItem(len(tracks) + 1000, "nothing"))
    # A second interface that comes late knows all of it.
    async with scene.new_client() as late:
        await late.connected()
        track = await late.current_track()
        assert track is not None and (track["trackTitle"], track["trackIndex"]) == (tracks[-1].name, len(tracks))
        await scene.player.thumb("stop")
        assert await late.current_track() is None
