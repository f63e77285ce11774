"""Lists of the library. There is one browse position for all clients, so each look walks there anew, in one batch."""

from __future__ import annotations

from dataclasses import dataclass

from .client import Client
from .connection import LARGEST_BATCH, Reply, Request

PAGE = 50


class BrowseFailed(Exception):
    """The list cannot be reached: no player, or its library is another one now."""


@dataclass(frozen=True)
class ListItem:
    item_id: int
    """The player's own number, to select by; not a position."""
    name: str
    is_supported: bool = True
    """False for a category that the player does not offer."""


class Listing:
    """A list, named by the items selected on the way from the root. Pages are fetched on demand, and kept.

    Good until the player goes (ipodConnectionNotification) or the connection does; make new ones then.
    """

    def __init__(self, client: Client, path: tuple[int, ...] = (), filter_text: str = "") -> None:
        self.path = path
        self.filter_text = filter_text
        self._client = client
        self._items: dict[int, ListItem] = {}
        self._count: int | None = None
        self._is_last = False

    async def count(self) -> int:
        if self._count is None:
            await self._fetch([0])
        assert self._count is not None
        return self._count

    async def items(self, start: int = 0, count: int = PAGE) -> list[ListItem]:
        """Of that page what there is; asks for what has not been seen yet."""
        end = min(start + count, await self.count())
        missing = sorted({at // PAGE for at in range(start, end) if at not in self._items})
        room = LARGEST_BATCH - len(self._walk())
        for i in range(0, len(missing), room):
            await self._fetch(missing[i:i + room])
        return [self._items[at] for at in range(start, end)]

    async def is_last(self) -> bool:
        """Whether selecting an item plays it."""
        await self.count()
        return self._is_last

    async def open(self, item: ListItem) -> Listing | None:
        """The list below the item, or None when the item plays now, with this list as the queue."""
        replies = await self._carry_out(Request("selectBrowseItem", {"itemId": item.item_id}))
        outcome = replies[-1].value()
        if outcome == "success":
            return None
        if outcome != "browsing":
            raise BrowseFailed(f"{item.name!r} cannot be selected")
        return Listing(self._client, (*self.path, item.item_id))

    def parent(self) -> Listing:
        """The root's is the root."""
        return Listing(self._client, self.path[:-1])

    def filtered(self, text: str) -> Listing:
        """The items whose names contain the text; an empty text is the whole list again. Not at the root."""
        return Listing(self._client, self.path, text)

    async def next_letter(self, position: int) -> int:
        """Where the next initial letter begins. Counts in the whole list, so not for a filtered one."""
        return await self._jump("getNextAlphaNumericIndex", position)

    async def previous_letter(self, position: int) -> int:
        return await self._jump("getPrevAlphaNumericIndex", position)

    async def _jump(self, method: str, position: int) -> int:
        if self.filter_text:
            raise ValueError("letters are looked for in the whole list")
        replies = await self._carry_out(Request(method, {"startIndex": position}))
        return int(replies[-1].value()["itemIndex"])

    def _walk(self) -> list[Request]:
        walk = [Request("resetBrowseList")]
        walk += [Request("selectBrowseItem", {"itemId": item_id}) for item_id in self.path]
        if self.filter_text:
            walk.append(Request("filterBrowseList", {"searchText": self.filter_text}))
        return walk

    async def _carry_out(self, *requests: Request) -> list[Reply]:
        """Their replies, when the way there could be gone."""
        walk = self._walk()
        replies = await self._client.batch(*walk, *requests)
        wanted: list[object] = [{"resetSuccess": True}, *["browsing"] * len(self.path)]
        wanted += ["success"] if self.filter_text else []
        if [reply.value() for reply in replies[:len(walk)]] != wanted:
            raise BrowseFailed("the list is not there any more")
        return replies[len(walk):]

    async def _fetch(self, pages: list[int]) -> None:
        starts = [page * PAGE for page in pages]
        requests = [Request("getBrowseList", {"startIndex": start, "itemCount": self._room(start)}) for start in starts]
        for start, reply in zip(starts, await self._carry_out(*requests)):
            page = reply.value()
            entries = page["categoryItems"]
            self._count = len(entries) if page["isRootCategory"] else page["totalCount"]
            self._is_last = page["isLastCategory"]
            for at, entry in enumerate(entries, start):
                self._items[at] = ListItem(entry["itemId"], entry["itemName"], entry.get("isSupported", True))

    def _room(self, start: int) -> int:
        """Lists are circular: a page that runs past the end would go on with the first item."""
        return PAGE if self._count is None else min(PAGE, self._count - start)
