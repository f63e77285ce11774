#!/usr/bin/env python3
"""Writes ipod_client/contract.py from docs/openrpc.json: the client's methods, notifications and types."""

from __future__ import annotations

import json
import sys
import textwrap
from pathlib import Path
from typing import Any

KIT = Path(__file__).resolve().parent
CONTRACT = KIT.parent / "docs/openrpc.json"
GENERATED = KIT / "ipod_client/contract.py"

HEAD = '''"""The service's methods, notifications and types. Made by generate_types.py; not to be edited."""

from __future__ import annotations

from abc import ABC, abstractmethod
from collections.abc import Callable, Mapping
from typing import Any, Literal, NotRequired, TypedDict, overload

from .connection import Notification
'''

CLASS = '''

class Contract(ABC):
    """A method of the service each. What they raise is what `call` raises."""

    @abstractmethod
    async def call(self, method: str, params: Mapping[str, object] | None = None) -> Any: ...

    @abstractmethod
    def listen(self, handler: Callable[[Notification], None]) -> Callable[[], None]: ...
'''

ON = '''
    def on(self, name: str, handler: Callable[[Any], None]) -> Callable[[], None]:
        """Calls the handler with the params of every such notification; what is returned ends that."""
        if name not in NOTIFICATIONS:
            raise ValueError(f"the service has no notification {name!r}")
        return self.listen(lambda told: handler(told.params) if told.name == name else None)


def _given(**params: object) -> dict[str, object] | None:
    """None when none is: to some methods an empty object says something else than no params."""
    return {name: value for name, value in params.items() if value is not None} or None
'''


PLAIN: dict[str, str] = {"string": "str", "integer": "int", "boolean": "bool", "null": "None"}


class Generator:
    def __init__(self, contract: dict[str, Any]) -> None:
        self._methods = contract["methods"]
        self._notifications = contract["x-notifications"]
        self._schemas = contract["components"]["schemas"]

    def text(self) -> str:
        parts = [HEAD, self._names("METHODS", self._methods), self._names("NOTIFICATIONS", self._notifications)]
        parts += [self._definition(name, schema) for name, schema in self._schemas.items() if "title" in schema]
        parts.append(CLASS)
        parts += [self._method(method) for method in self._methods]
        parts += [self._overload(notification) for notification in self._notifications]
        return "".join([*parts, ON])

    def _names(self, constant: str, named: list[dict[str, Any]]) -> str:
        lines = "".join(f'    "{it["name"]}",\n' for it in named)
        return f"\n{constant} = frozenset({{\n{lines}}})\n"

    def _definition(self, name: str, schema: dict[str, Any]) -> str:
        if "properties" not in schema:
            return f"\n{name} = {self._type(schema)}\n"
        members = ""
        for member, its in schema["properties"].items():
            kind = self._type(its)
            members += f"    {member}: {kind if member in schema['required'] else f'NotRequired[{kind}]'}\n"
        told = f"{docstring(schema['description'])}\n" if "description" in schema else ""
        return f"\n\nclass {name}(TypedDict):\n{told}{members}"

    def _method(self, method: dict[str, Any]) -> str:
        params = [(it["name"], self._type(it["schema"]), it.get("required", False)) for it in method["params"]]
        declared = "".join(f", {name}: {kind}" if required else f", {name}: {kind} | None = None"
                           for name, kind, required in params)
        given = ", ".join(f"{name}={name}" for name, *_ in params)
        result = self._type(method["result"]["schema"])
        # Answered without a result: None.
        result += " | None" if "x-result-missing" in method and "None" not in result else ""
        star, arguments = (", *", f", _given({given})") if params else ("", "")
        return (f"\n    async def {method['name']}(self{star}{declared}) -> {result}:\n"
                f"    {docstring(method['summary'])}"
                f"        result: {result} = await self.call(\"{method['name']}\"{arguments})\n"
                f"        return result\n")

    def _overload(self, notification: dict[str, Any]) -> str:
        handler = f"Callable[[{self._type(notification['params'])}], None]"
        return (f"\n    @overload\n    def on(self, name: Literal[\"{notification['name']}\"],\n"
                f"           handler: {handler}) -> Callable[[], None]: ...\n")

    def _type(self, schema: dict[str, Any]) -> str:
        match schema:
            case {"$ref": str(ref)}:
                name = ref.rpartition("/")[2]
                return name if "title" in self._schemas[name] else self._type(self._schemas[name])
            case {"oneOf": kinds}:
                return " | ".join(self._type(kind) for kind in kinds)
            case {"enum": values}:
                return f"Literal[{', '.join(map(literal, values))}]"
            case {"const": value}:
                return f"Literal[{literal(value)}]"
            case {"type": "array", "items": items}:
                return f"list[{self._type(items)}]"
            case {"type": kind}:
                return PLAIN[kind]
        raise ValueError(f"no type for {schema}")


def docstring(text: str) -> str:
    return textwrap.fill(f'"""{text}"""', 114, initial_indent="    ", subsequent_indent="    ") + "\n"


def literal(value: object) -> str:
    return json.dumps(value) if isinstance(value, str) else repr(value)


def generate() -> str:
    return Generator(json.loads(CONTRACT.read_text())).text()


if __name__ == "__main__":
    GENERATED.write_text(generate())
    print(f"wrote {GENERATED}", file=sys.stderr)
