"""The service's methods, notifications and types. Made by generate_types.py; not to be edited."""

from __future__ import annotations

from abc import ABC, abstractmethod
from collections.abc import Callable, Mapping
from typing import Any, Literal, NotRequired, TypedDict, overload

from .connection import Notification

METHODS = frozenset({
    "start",
    "stop",
    "exit",
    "isIpodConnected",
    "setRepeatMode",
    "getRepeatMode",
    "enableShuffle",
    "isShuffleEnabled",
    "getCurrentTrackInfo",
    "getCurrentAlbumArt",
    "getCurrentAlbumArtDelayed",
    "playFirst",
    "play",
    "pause",
    "playPause",
    "next",
    "previous",
    "getBrowseList",
    "selectBrowseItem",
    "selectBrowseBack",
    "filterBrowseList",
    "fastForwardSong",
    "rewindSong",
    "resetBrowseList",
    "isTrackPaused",
    "getSongList",
    "getNextAlphaNumericIndex",
    "getPrevAlphaNumericIndex",
    "getHasPlayableData",
})

NOTIFICATIONS = frozenset({
    "ipodConnectionNotification",
    "trackInfoNotification",
    "trackTimeNotification",
    "trackPausedNotification",
    "ipodAlbumArtNotification",
})

StatusWord = Literal["success", "failure"]

Selection = Literal["success", "browsing", "failure"]

RepeatMode = Literal["off", "current", "all"]


class Success(TypedDict):
    success: bool


class Connection(TypedDict):
    connected: bool


class Repeat(TypedDict):
    mode: RepeatMode


class Shuffle(TypedDict):
    enabled: bool


class Scan(TypedDict):
    enabled: bool


class Paused(TypedDict):
    isPaused: bool


class PlayableData(TypedDict):
    hasPlayableData: bool


class Reset(TypedDict):
    resetSuccess: bool


class ItemIndex(TypedDict):
    itemIndex: int


class CurrentTrackInfo(TypedDict):
    isPlaying: Literal[True]
    trackAlbum: str
    trackArtist: str
    trackCount: Literal[1]
    trackDuration: int
    trackIndex: Literal[-1]
    trackTime: int
    trackTitle: str


class CurrentTrack(TypedDict):
    trackInfo: CurrentTrackInfo


class AlbumArt(TypedDict):
    """albumArt is a JPEG in base64, with what the device padded it with behind its end marker. A shrunk one is
    reported as 100 x 100, whatever its size. Both sizes are there or neither."""

    albumArt: str
    imageHeight: NotRequired[int]
    imageWidth: NotRequired[int]


class Item(TypedDict):
    itemId: int
    itemName: str


class Category(TypedDict):
    """isSupported is false for all of them until the library can be browsed."""

    isSupported: bool
    itemId: Literal[2, 4, 32, 8, 16, 64]
    itemName: Literal["Playlists", "Artists", "Songs", "Albums", "Genres", "Composers"]


class RootPage(TypedDict):
    categoryItems: list[Category]
    currIndex: Literal[0]
    isLastCategory: Literal[False]
    isRootCategory: Literal[True]
    totalCount: Literal[0]


class ListPage(TypedDict):
    """isLastCategory: selecting an item plays it. totalCount: how many items the list has, under a filter how
    many it leaves."""

    categoryItems: list[Item]
    currIndex: int
    isLastCategory: bool
    isRootCategory: Literal[False]
    totalCount: int

BrowsePage = RootPage | ListPage


class SongList(TypedDict):
    categoryItems: list[Item]
    isLastCategory: bool
    isRootCategory: Literal[False]


class TrackInfo(TypedDict):
    """trackIndex counts from 1, and is 1 when the position is unknown."""

    isPlaying: bool
    trackAlbum: str
    trackArtist: str
    trackCount: int
    trackDuration: int
    trackIndex: int
    trackTime: int
    trackTitle: str


class TrackInfoParams(TypedDict):
    trackInfo: TrackInfo


class TrackTime(TypedDict):
    """trackDuration is part of the contract and never comes today; a client shall bear it."""

    trackDuration: NotRequired[int]
    trackTime: int


class TrackPaused(TypedDict):
    isTrackPaused: bool


class AlbumArtParams(TypedDict):
    """As AlbumArt, and always with the sizes. trackIndex counts from 1, and is 1 when the position is unknown."""

    albumArt: str
    imageHeight: int
    imageWidth: int
    trackIndex: int


class Contract(ABC):
    """A method of the service each. What they raise is what `call` raises."""

    @abstractmethod
    async def call(self, method: str, params: Mapping[str, object] | None = None) -> Any: ...

    @abstractmethod
    def listen(self, handler: Callable[[Notification], None]) -> Callable[[], None]: ...

    async def start(self) -> StatusWord:
        """Starts the copy of the player's USB audio to the unit's output."""
        result: StatusWord = await self.call("start")
        return result

    async def stop(self) -> StatusWord:
        """Stops that copy; it does not pause the player."""
        result: StatusWord = await self.call("stop")
        return result

    async def exit(self) -> Literal["success"]:
        """Ends the server: the device and the port are closed."""
        result: Literal["success"] = await self.call("exit")
        return result

    async def isIpodConnected(self) -> Connection:
        """Whether a device is open."""
        result: Connection = await self.call("isIpodConnected")
        return result

    async def setRepeatMode(self, *, mode: RepeatMode | None = None) -> Repeat:
        """Sets what is repeated, and answers the mode read back."""
        result: Repeat = await self.call("setRepeatMode", _given(mode=mode))
        return result

    async def getRepeatMode(self) -> Repeat:
        """What is repeated."""
        result: Repeat = await self.call("getRepeatMode")
        return result

    async def enableShuffle(self, *, enable: bool | None = None) -> Shuffle:
        """Switches shuffle by tracks on or off, and answers the setting read back."""
        result: Shuffle = await self.call("enableShuffle", _given(enable=enable))
        return result

    async def isShuffleEnabled(self) -> Shuffle:
        """Whether shuffle is on, by tracks or by albums."""
        result: Shuffle = await self.call("isShuffleEnabled")
        return result

    async def getCurrentTrackInfo(self) -> CurrentTrack:
        """The current track's texts and times; a trackInfoNotification to all clients follows."""
        result: CurrentTrack = await self.call("getCurrentTrackInfo")
        return result

    async def getCurrentAlbumArt(self) -> AlbumArt:
        """The current track's picture, now."""
        result: AlbumArt = await self.call("getCurrentAlbumArt")
        return result

    async def getCurrentAlbumArtDelayed(self) -> Success:
        """Has the picture sent to all clients as ipodAlbumArtNotification once it is there."""
        result: Success = await self.call("getCurrentAlbumArtDelayed")
        return result

    async def playFirst(self) -> Success:
        """Plays the library's first track."""
        result: Success = await self.call("playFirst")
        return result

    async def play(self) -> Success | None:
        """Goes on, or plays the library's first track when stopped; null when it plays already."""
        result: Success | None = await self.call("play")
        return result

    async def pause(self) -> Success:
        """Pauses."""
        result: Success = await self.call("pause")
        return result

    async def playPause(self) -> Success:
        """Plays when paused, plays the library's first track when stopped, else pauses."""
        result: Success = await self.call("playPause")
        return result

    async def next(self) -> Success:
        """The next track."""
        result: Success = await self.call("next")
        return result

    async def previous(self) -> Success:
        """The track's beginning, or the previous track, as the device has it."""
        result: Success = await self.call("previous")
        return result

    async def getBrowseList(self, *, startIndex: int | None = None, itemCount: int | None = None) -> BrowsePage:
        """A page of the present list; at the root, the categories."""
        result: BrowsePage = await self.call("getBrowseList", _given(startIndex=startIndex, itemCount=itemCount))
        return result

    async def selectBrowseItem(self, *, itemId: int) -> Selection | None:
        """Opens an item of the present list, or plays it."""
        result: Selection | None = await self.call("selectBrowseItem", _given(itemId=itemId))
        return result

    async def selectBrowseBack(self) -> StatusWord:
        """The list before, or the root."""
        result: StatusWord = await self.call("selectBrowseBack")
        return result

    async def filterBrowseList(self, *, searchText: str) -> StatusWord:
        """Narrows the present list to the names that contain a text, case aside."""
        result: StatusWord = await self.call("filterBrowseList", _given(searchText=searchText))
        return result

    async def fastForwardSong(self, *, enable: bool) -> Scan:
        """Starts or ends fast forward."""
        result: Scan = await self.call("fastForwardSong", _given(enable=enable))
        return result

    async def rewindSong(self, *, enable: bool) -> Scan:
        """Starts or ends rewind."""
        result: Scan = await self.call("rewindSong", _given(enable=enable))
        return result

    async def resetBrowseList(self) -> Reset:
        """Back to the root."""
        result: Reset = await self.call("resetBrowseList")
        return result

    async def isTrackPaused(self) -> Paused:
        """Whether the player is paused; false when stopped, and without a device."""
        result: Paused = await self.call("isTrackPaused")
        return result

    async def getSongList(self) -> SongList | None:
        """From the root: opens Songs and answers all of them."""
        result: SongList | None = await self.call("getSongList")
        return result

    async def getNextAlphaNumericIndex(self, *, startIndex: int) -> ItemIndex:
        """Where the next initial letter begins; the last index when there is none, -1 at the root."""
        result: ItemIndex = await self.call("getNextAlphaNumericIndex", _given(startIndex=startIndex))
        return result

    async def getPrevAlphaNumericIndex(self, *, startIndex: int) -> ItemIndex:
        """The last item of the letter before; 0 when there is none, and at the root."""
        result: ItemIndex = await self.call("getPrevAlphaNumericIndex", _given(startIndex=startIndex))
        return result

    async def getHasPlayableData(self) -> PlayableData:
        """Whether the library has a track; false as well without a device and until the library can be browsed."""
        result: PlayableData = await self.call("getHasPlayableData")
        return result

    @overload
    def on(self, name: Literal["ipodConnectionNotification"],
           handler: Callable[[Connection], None]) -> Callable[[], None]: ...

    @overload
    def on(self, name: Literal["trackInfoNotification"],
           handler: Callable[[TrackInfoParams], None]) -> Callable[[], None]: ...

    @overload
    def on(self, name: Literal["trackTimeNotification"],
           handler: Callable[[TrackTime], None]) -> Callable[[], None]: ...

    @overload
    def on(self, name: Literal["trackPausedNotification"],
           handler: Callable[[TrackPaused], None]) -> Callable[[], None]: ...

    @overload
    def on(self, name: Literal["ipodAlbumArtNotification"],
           handler: Callable[[AlbumArtParams], None]) -> Callable[[], None]: ...

    def on(self, name: str, handler: Callable[[Any], None]) -> Callable[[], None]:
        """Calls the handler with the params of every such notification; what is returned ends that."""
        if name not in NOTIFICATIONS:
            raise ValueError(f"the service has no notification {name!r}")
        return self.listen(lambda told: handler(told.params) if told.name == name else None)


def _given(**params: object) -> dict[str, object] | None:
    """None when none is: to some methods an empty object says something else than no params."""
    return {name: value for name, value in params.items() if value is not None} or None
