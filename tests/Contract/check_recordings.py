"""Checks what the kit's clients have recorded against docs/openrpc.json: "check_recordings.py FOLDER".

A recording is a connection: a direction, > or <, with a length on a line, then so many bytes, and so on.
"""

from __future__ import annotations

import contextlib
import json
import re
import sys
from collections import defaultdict
from collections.abc import Iterator
from pathlib import Path
from typing import Any

from jsonschema import ValidationError

from contract import METHODS, check_answer, check_notification

_PIECE = re.compile(rb"([<>])(\d+)\n")


def directions(recording: bytes) -> tuple[bytes, bytes]:
    """What was sent, and what was received."""
    streams = {b">": bytearray(), b"<": bytearray()}
    position = 0
    while piece := _PIECE.match(recording, position):
        position = piece.end() + int(piece[2])
        streams[piece[1]] += recording[piece.end():position]
    assert position == len(recording), "a recording ends in the middle"
    return bytes(streams[b">"]), bytes(streams[b"<"])


def requests(sent: bytes) -> Iterator[dict[str, Any]]:
    """Those that can be read: a line may be anything."""
    for line in sent.splitlines():
        with contextlib.suppress(ValueError):
            value = json.loads(line)
            yield from (it for it in (value if isinstance(value, list) else [value]) if isinstance(it, dict))


def methods_by_id(sent: bytes) -> dict[str, set[str]]:
    methods: dict[str, set[str]] = defaultdict(set)
    for request in requests(sent):
        if request.get("method") in METHODS:
            methods[json.dumps(request.get("id"))].add(request["method"])
    return methods


def check_line(line: bytes, methods: dict[str, set[str]]) -> None:
    message = json.loads(line)
    for answer in message if isinstance(message, list) else [message]:
        if "method" in answer:
            check_notification(answer)
        else:
            _check_any(answer, methods.get(json.dumps(answer.get("id"))) or {None})


def _check_any(answer: dict[str, Any], asked: set[Any]) -> None:
    """An id may have been used more than once."""
    problems = []
    for method in asked:
        try:
            check_answer(answer, method)
            return
        except ValidationError as problem:
            problems.append(problem)
    raise problems[0]


def check(recording: bytes) -> int:
    """How many messages it holds."""
    sent, received = directions(recording)
    methods = methods_by_id(sent)
    lines = received.split(b"\n")[:-1]
    for line in lines:
        try:
            check_line(line, methods)
        except (ValidationError, ValueError) as problem:
            sys.exit(f"{line[:300].decode(errors='replace')}\nis not as the contract has it: {problem}")
    return len(lines)


def main(folder: Path) -> None:
    recordings = sorted(folder.iterdir())
    count = sum(check(recording.read_bytes()) for recording in recordings)
    assert count > 0, f"nothing was recorded in {folder}"
    print(f"{count} messages of {len(recordings)} connections are as the contract has them")


if __name__ == "__main__":
    main(Path(sys.argv[1]))
