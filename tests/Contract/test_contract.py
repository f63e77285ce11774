"""The contract against itself, its checks against wrong messages, and ipodctl's table and the page's against it."""

from __future__ import annotations

import json
import re
import shlex
import socket
import subprocess
from pathlib import Path
from typing import Any

import pytest
from jsonschema import ValidationError

from check_recordings import check_line, methods_by_id
from contract import DOCUMENT, METHODS, NOTIFICATIONS, SOURCE, check_answer, check_notification, params_validator

GROUPS = {"Playback", "Settings", "The current track", "Browsing", "Service and audio"}


def test_its_own_examples_fit() -> None:
    assert (len(METHODS), len(NOTIFICATIONS)) == (29, 5)
    for method, entry in METHODS.items():
        assert {tag["name"] for tag in entry["tags"]} <= GROUPS and entry["paramStructure"] == "by-name"
        for example in entry["examples"]:
            params_validator(method).validate({param["name"]: param["value"] for param in example["params"]})
            check_answer({"jsonrpc": "2.0", "id": 1, "result": example["result"]["value"]}, method)
    for name, entry in NOTIFICATIONS.items():
        for params in entry["examples"]:
            check_notification({"jsonrpc": "2.0", "method": name, "params": params})
    project = re.search(r"project\(IpodService VERSION (\S+)", (SOURCE / "CMakeLists.txt").read_text())
    assert project and DOCUMENT["info"]["version"] == project[1]


SENT = b"""
    [{"jsonrpc":"2.0","method":"play","id":1},{"jsonrpc":"2.0","method":"getSongList","id":"a"}]
    {"jsonrpc":"2.0","method":"getCurrentAlbumArt","id":2}"""


@pytest.mark.parametrize("line", [
    '{"id":1,"jsonrpc":"2.0"}',
    '{"id":1,"jsonrpc":"2.0","result":{"success":1}}',
    '{"id":"a","jsonrpc":"2.0","result":{"categoryItems":[],"isLastCategory":true,"isRootCategory":false}}',
    '{"id":2,"jsonrpc":"2.0","result":{"albumArt":"/9j/"}}',
    '{"id":3,"jsonrpc":"2.0","result":"success"}',
    '{"id":1,"result":null}',
    '{"error":{"code":-32700,"message":"Parse error"},"id":null,"jsonrpc":"2.0"}',
    '{"error":{"code":-32602,"message":"Invalid params."},"id":1,"jsonrpc":"2.0"}',
    '{"jsonrpc":"2.0","method":"trackTimeNotification","params":{"trackTime":-1}}',
    '{"jsonrpc":"2.0","method":"ipodAlbumartNotification","params":{"albumArt":""}}',
    '{"id":1,"jsonrpc":"2.0","method":"trackPausedNotification","params":{"isTrackPaused":true}}',
])
def test_wrong_lines_are_found(line: str) -> None:
    with pytest.raises(ValidationError):
        check_line(line.encode(), methods_by_id(SENT))


def answered(listener: socket.socket, words: list[Any], result: object) -> tuple[dict[str, Any], int]:
    """The first request of a program whose every request gets this answer, and its exit status."""
    process = subprocess.Popen(words, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    requests = []
    connection, _ = listener.accept()
    connection.settimeout(20)
    with connection, connection.makefile("rw") as stream:
        for line in stream:
            requests.append(json.loads(line))
            stream.write(json.dumps({"id": requests[-1]["id"], "jsonrpc": "2.0", "result": result}) + "\n")
            stream.flush()
    return requests[0], process.wait(timeout=20)


@pytest.fixture(scope="module")
def ipodctl(pytestconfig: pytest.Config) -> Path:
    return Path(pytestconfig.getoption("--build")) / "IpodControl/ipodctl"


def help_of(ipodctl: Path, *command: str) -> str:
    return subprocess.run([ipodctl, *command, "--help"], check=True, capture_output=True, text=True).stdout


def commands(ipodctl: Path) -> dict[str, str]:
    """The methods that it offers, by their commands, with the groups that they stand in."""
    group, found = "", {}
    for line in help_of(ipodctl).splitlines():
        if line.endswith(":"):
            group = line[:-1]
        elif group in GROUPS and (command := re.match(r"  ([a-z-]+)", line)):
            found[command[1]] = group
    return found


def test_ipodctl_has_the_same_methods_in_the_same_groups(ipodctl: Path) -> None:
    camel = {re.sub("-(.)", lambda it: it[1].upper(), command): group
             for command, group in commands(ipodctl).items()}
    assert camel == {name: method["tags"][0]["name"] for name, method in METHODS.items()}


def test_ipodctl_sends_what_the_contract_has_and_takes_every_answer(ipodctl: Path) -> None:
    listener = socket.create_server(("127.0.0.1", 0))
    listener.settimeout(20)
    for command in commands(ipodctl):
        example = re.search(r"Example:\n  ipodctl (.*)", help_of(ipodctl, command))
        assert example
        method = METHODS[re.sub("-(.)", lambda it: it[1].upper(), command)]
        words = [ipodctl, "--port", str(listener.getsockname()[1]), *shlex.split(example[1])]
        for answer in method["examples"]:
            result = answer["result"]["value"]
            request, status = answered(listener, words, result)
            assert request["method"] == method["name"]
            params_validator(method["name"]).validate(request.get("params", {}))
            assert status == 1 if is_refused(method, result) else status in (0, 1), (command, result, status)


def is_refused(method: dict[str, Any], result: Any) -> bool:
    refused = method.get("x-refused")
    return bool(refused) and refused["value"] == (
        (result or {}).get(refused["member"]) if "member" in refused else result)
