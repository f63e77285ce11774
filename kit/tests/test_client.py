"""The client's recipes, against a service that says what is rare."""

import asyncio
import base64

import pytest

from fake_service import FakeService, answer_to
from ipod_client import Client, ConnectionLost, Request, ServiceError, cut_jpeg, to_cover


def connect(service: FakeService, patience: float = 10.0) -> Client:
    return Client(port=service.port, patience=patience, retry=0.01)


async def test_answers_find_their_requests_whatever_comes_between() -> None:
    kept = []

    def handle(service, message):  # type: ignore[no-untyped-def]
        kept.append(message)
        if len(kept) == 3:
            service.tell("trackTimeNotification", trackTime=1000)
            first, batch, last = kept
            service.say([{"id": batch[0]["id"], "jsonrpc": "2.0"},
                         {"id": batch[1]["id"], "jsonrpc": "2.0", "error": {"code": -32603, "message": "Internal."}}])
            service.say(answer_to(last, "last"))
            service.say({"id": 999, "jsonrpc": "2.0", "result": "to nobody"})
            service.say(answer_to(first, None))

    def failing(told: object) -> None:
        raise ZeroDivisionError

    async with FakeService(handle) as service, connect(service) as client:
        times: list[int] = []
        client.on("trackTimeNotification", failing)
        client.on("trackTimeNotification", lambda told: times.append(told["trackTime"]))
        faults: list[object] = []
        asyncio.get_running_loop().set_exception_handler(lambda loop, context: faults.append(context["exception"]))
        await client.connected()
        first, batch, last = await asyncio.gather(
            client.play(), client.batch(Request("getSongList"), Request("getCurrentAlbumArt")), client.call("stop"))
        assert first is None and last == "last" and times == [1000]
        assert isinstance(faults[0], ZeroDivisionError), "a handler's fault costs nothing else"
        assert batch[0].value() is None, "neither result nor error"
        with pytest.raises(ServiceError) as refusal:
            batch[1].value()
        assert refusal.value.code == -32603
    assert ["params" in message for message in (kept[0], *kept[1])] == [False] * 3


async def test_an_answer_older_than_a_notification_is_asked_for_again() -> None:
    answers = iter([True, False])

    def handle(service, message):  # type: ignore[no-untyped-def]
        is_paused = next(answers)
        if is_paused:
            service.tell("trackPausedNotification", isTrackPaused=False)
        return answer_to(message, {"isPaused": is_paused})

    async with FakeService(handle) as service, connect(service) as client:
        await client.connected()
        assert await client.isTrackPaused() == {"isPaused": False}


async def test_a_connection_that_ends_comes_back() -> None:
    links: list[bool] = []
    service = FakeService(lambda service, message: service.hang_up())
    async with service, connect(service) as client:
        client.on_link(links.append)
        await client.connected()
        with pytest.raises(ConnectionLost):
            await client.pause()
        assert not client.is_connected
        with pytest.raises(ConnectionLost):
            await client.pause()
        await client.connected()
        service.say({"id": None, "jsonrpc": "2.0", "error": {"code": -32700, "message": "Parse error."}})
        while links[-1]:
            await asyncio.sleep(0.001)
        await client.connected()
    assert links == [True, False, True, False, True, False] and service.connections == 3


async def test_what_there_is_none_of_is_never_sent() -> None:
    sent = []
    async with FakeService(lambda service, message: sent.append(message)) as service, \
            connect(service, patience=0.05) as client:
        await client.connected()
        with pytest.raises(AttributeError):
            await client.pauze()  # type: ignore[attr-defined]
        with pytest.raises(ValueError, match="no method 'pauze'"):
            await client.call("pauze")
        with pytest.raises(ValueError, match="no notification 'trackInfo'"):
            client.on("trackInfo", print)  # type: ignore[call-overload]
        with pytest.raises(ValueError, match="1 to 32"):
            await client.batch(*[Request("stop")] * 33)
        with pytest.raises(TimeoutError):
            await client.setRepeatMode()
    assert [message["method"] for message in sent] == ["setRepeatMode"] and "params" not in sent[0]


def test_a_picture_ends_at_its_own_end_marker() -> None:
    thumbnail = b"\xff\xe1\x00\x08\xff\xd8\xff\xd9\x00\x00"
    scan = b"\xff\xda\x00\x02" + b"\x11\xff\x00\xff\xd3\x22"
    jpeg = b"\xff\xd8" + thumbnail + b"\xff" + scan + scan + b"\xff\xd9"
    assert cut_jpeg(jpeg + bytes(5) + b"\xff\xd9") == jpeg
    for length in range(2, len(jpeg)):
        assert cut_jpeg(jpeg[:length]) == jpeg[:length], "cut short"
    sizes = {"imageWidth": 90, "imageHeight": 480}
    cover = to_cover({"albumArt": base64.b64encode(jpeg + bytes(99)).decode()} | sizes)
    assert cover is not None and (cover.jpeg, cover.width, cover.height, cover.track_index) == (jpeg, 90, 480, None)
    told = to_cover({"albumArt": base64.b64encode(jpeg).decode(), "trackIndex": 3} | sizes)
    assert told is not None and told.track_index == 3
    assert to_cover({"albumArt": base64.b64encode(b"RIFF").decode()} | sizes) is None
    assert to_cover({"albumArt": ""}) is None
