"""Covers: what an answer or a notification carries, made a picture."""

from __future__ import annotations

import base64
from collections.abc import Mapping
from dataclasses import dataclass
from typing import Any

_START_OF_SCAN, _END = 0xDA, 0xD9


@dataclass(frozen=True)
class Cover:
    jpeg: bytes
    width: int
    """In pixels, as told: a picture that the service made smaller is always told as 100 x 100."""
    height: int
    track_index: int | None = None
    """Of the track that it belongs to, as trackInfo counts; None of getCurrentAlbumArt's, which does not tell."""


def to_cover(params: Mapping[str, Any]) -> Cover | None:
    """Of getCurrentAlbumArt's result or ipodAlbumArtNotification's params; None where there is no picture in it."""
    data = base64.b64decode(params["albumArt"])
    if not data.startswith(b"\xff\xd8"):
        return None
    return Cover(cut_jpeg(data), params["imageWidth"], params["imageHeight"], params.get("trackIndex"))


def cut_jpeg(data: bytes) -> bytes:
    """Up to and with the end marker, without what stands behind it; the whole where the picture is cut short.

    A thumbnail inside has an end marker of its own, so the segments are walked.
    """
    at = 2
    while at + 4 <= len(data) and data[at] == 0xFF:
        marker = data[at + 1]
        if marker == 0xFF:  # a fill byte
            at += 1
            continue
        if marker == _END:
            return data[:at + 2]
        at += 2 + int.from_bytes(data[at + 2:at + 4], "big")
        if marker == _START_OF_SCAN:
            at = _end_of_scan(data, at)
    return data[:at + 2] if data[at:at + 2] == b"\xff\xd9" else data


def _end_of_scan(data: bytes, at: int) -> int:
    """Where the next marker stands; FF 00 and the restart markers belong to the scan."""
    while (at := data.find(b"\xff", at)) >= 0 and at + 1 < len(data):
        if data[at + 1] not in (0x00, *range(0xD0, 0xD8)):
            return at
        at += 2
    return len(data)
