import pytest


def pytest_addoption(parser: pytest.Parser) -> None:
    parser.addoption("--build", required=True, help="the build folder")
