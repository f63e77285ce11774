"""Runs the tests inside the sandbox, where the service can do no harm, and gives each its scene.

"pytest kit" is enough, from anywhere; "--build FOLDER" names what was built, build/dev unless told otherwise.
"""

from __future__ import annotations

import asyncio
import inspect
import os
import subprocess
from collections.abc import Iterator
from pathlib import Path

import pytest

from ipod_testing import Scene
from ipod_testing.build import SANDBOX, SOURCE, Build
from ipod_testing.wire import recorded

SLOWEST_TEST = 6  # times the patience


def pytest_addoption(parser: pytest.Parser) -> None:
    parser.addoption("--build", type=Path, default=SOURCE / "build/dev", help="the build folder")


def pytest_cmdline_main(config: pytest.Config) -> int | None:
    """From outside the sandbox: the same command inside, where there is only the system's own Python."""
    if "IPOD_TEST_SANDBOX" in os.environ:
        return None
    build = config.getoption("--build").resolve()
    if not (build / "CMakeCache.txt").exists():
        raise pytest.UsageError(f"{build} is no build folder; --build names one")
    command: list[str | os.PathLike[str]] = [SANDBOX, "/usr/bin/env", "-C", config.invocation_params.dir]
    command += ["/usr/bin/python3", "-m", "pytest", *config.invocation_params.args, "--build", build]
    return subprocess.run(command, env=os.environ | {"SANDBOX_BUILD": str(build)}).returncode


@pytest.fixture
def build(request: pytest.FixtureRequest) -> Build:
    return Build(request.config.getoption("--build"))


@pytest.fixture(autouse=True)
def runner() -> Iterator[asyncio.Runner]:
    """The event loop of one test and of its fixtures."""
    with recorded(), asyncio.Runner() as runner:
        yield runner


@pytest.fixture
def bare_scene(build: Build, tmp_path: Path) -> Scene:
    """Nothing runs yet, so that music can be made first: `async with bare_scene.running()`."""
    return Scene(build, tmp_path)


@pytest.fixture
def scene(bare_scene: Scene, runner: asyncio.Runner) -> Iterator[Scene]:
    running = bare_scene.running()
    yield runner.run(running.__aenter__())
    runner.run(running.__aexit__(None, None, None))


def pytest_pyfunc_call(pyfuncitem: pytest.Function) -> bool | None:
    """A test may be a coroutine."""
    if not inspect.iscoroutinefunction(pyfuncitem.obj):
        return None
    names = inspect.signature(pyfuncitem.obj).parameters
    arguments = {name: pyfuncitem.funcargs[name] for name in names}
    build = Build(pyfuncitem.config.getoption("--build"))

    async def bounded() -> None:
        async with asyncio.timeout(SLOWEST_TEST * build.patience):
            await pyfuncitem.obj(**arguments)

    runner = pyfuncitem.funcargs["runner"]
    assert isinstance(runner, asyncio.Runner)
    runner.run(bounded())
    return True
