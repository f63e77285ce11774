"""docs/openrpc.json as tests use it: which method is there, and whether a message is as the document has it."""

from __future__ import annotations

import json
from functools import cache
from pathlib import Path
from typing import Any

from jsonschema import Draft7Validator, ValidationError

SOURCE = Path(__file__).resolve().parents[2]
DOCUMENT: dict[str, Any] = json.loads((SOURCE / "docs/openrpc.json").read_text())
METHODS = {method["name"]: method for method in DOCUMENT["methods"]}
NOTIFICATIONS = {notification["name"]: notification for notification in DOCUMENT["x-notifications"]}
ERRORS = {error["code"]: error["message"] for error in DOCUMENT["components"]["errors"].values()}


def validator(schema: dict[str, Any]) -> Draft7Validator:
    """Of a schema that stands in the document."""
    return Draft7Validator({"allOf": [schema], "components": DOCUMENT["components"]})


@cache
def _named(name: str) -> Draft7Validator:
    return validator({"$ref": f"#/components/schemas/{name}"})


@cache
def params_validator(method: str) -> Draft7Validator:
    params = METHODS[method]["params"]
    return validator({
        "type": "object",
        "properties": {param["name"]: param["schema"] for param in params},
        "required": [param["name"] for param in params if param.get("required")],
        "additionalProperties": False})


@cache
def _result_validator(method: str) -> Draft7Validator:
    return validator(METHODS[method]["result"]["schema"])


@cache
def _notification_validator(name: str) -> Draft7Validator:
    return validator(NOTIFICATIONS[name]["params"])


def check_notification(message: dict[str, Any]) -> None:
    """Raises ValidationError, as do the other checks."""
    _named("Notification").validate(message)
    if message["method"] not in NOTIFICATIONS:
        raise ValidationError(f"no notification {message['method']}")
    _notification_validator(message["method"]).validate(message["params"])


def check_answer(message: dict[str, Any], method: str | None) -> None:
    """`method`: what was asked; None when it had no such name, or could not be understood."""
    if "error" in message:
        _check_error(message, method)
        return
    _named("Answer").validate(message)
    if method is None:
        raise ValidationError("a result of a method that is none")
    if "result" in message:
        _result_validator(method).validate(message["result"])
    elif "x-result-missing" not in METHODS[method]:
        raise ValidationError(f"{method} answered without a result")


def _check_error(message: dict[str, Any], method: str | None) -> None:
    _named("ErrorAnswer").validate(message)
    code = message["error"]["code"]
    if ERRORS.get(code) != message["error"]["message"]:
        raise ValidationError(f"no such error: {message['error']}")
    invalid_params = {"$ref": "#/components/errors/InvalidParams"}
    if code == -32602 and (method is None or invalid_params not in METHODS[method].get("errors", ())):
        raise ValidationError(f"{method} reads no parameters that could be wrong")
