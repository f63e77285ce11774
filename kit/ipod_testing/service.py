"""The service as a process, with the simulated player behind it. Inside the sandbox: it deletes files in /."""

from __future__ import annotations

import asyncio
import contextlib
import os
import signal
import subprocess
from collections.abc import Iterator
from pathlib import Path

from .build import SOURCE, Build

CONTROL_SOCKET = Path("/tmp/device-simulator.control")
PLAYER_VARIABLE = "DEVICE_SIMULATOR_PLAYER"
LOG = Path("/home/root/ipod.log")
_ERRORS = Path("/tmp/service.stderr")
_POLLS = {7, 271, 73, 168, 309, 336, 414, 219, 128}
"""The numbers of poll and ppoll on x86 and ARM, of 64 bits and of 32, and of restart_syscall on those of 64: a poll
that has been stopped meanwhile, as by a machine that is paused."""
_LEAKS = SOURCE / "tests/lsan.supp"


class Service:
    """At most one at a time listens on the port. `environment` is what the simulated player reads at its start."""

    def __init__(self, build: Build, environment: dict[str, str]) -> None:
        self._build = build
        self._environment = environment
        self._process: subprocess.Popen[bytes] | None = None

    def start(self, *arguments: str) -> None:
        """With a player of its own, unless one stays."""
        if PLAYER_VARIABLE not in self._environment:
            CONTROL_SOCKET.unlink(missing_ok=True)
        self._process = _start(self._environment, self._build.service, *arguments)

    @contextlib.contextmanager
    def staying_player(self) -> Iterator[None]:
        """A player that outlives the services started in the block."""
        self._environment[PLAYER_VARIABLE] = "/tmp/player"
        player = _start(self._environment, self._build.player, "--stay")
        try:
            yield
        finally:
            player.kill()
            player.wait()
            del self._environment[PLAYER_VARIABLE]

    def is_up(self) -> bool:
        """Whether a signal ends it in order now: its idle main loop polls one descriptor, and nothing before it does
        but GStreamer's first scan of all, which leaves the registry behind."""
        assert self._process is not None
        if not Path(os.environ["GST_REGISTRY"]).exists():
            return False
        try:
            call, _, count = Path(f"/proc/{self._process.pid}/syscall").read_text().split()[:3]
        except (OSError, ValueError):
            return False  # it runs, or has ended
        # The control channel is there once the service has made its first device-manager call.
        return int(call) in _POLLS and int(count, 16) == 1 and CONTROL_SOCKET.exists()

    def signal(self, number: int) -> None:
        assert self._process is not None
        self._process.send_signal(number)

    async def end(self) -> int:
        """Its exit status once it has one, negative for a signal's."""
        assert self._process is not None
        async with asyncio.timeout(self._build.patience):
            while (status := self._process.poll()) is None:
                await asyncio.sleep(0.005)
        self._process = None
        return status

    async def stop(self) -> int:
        """In order, with SIGTERM."""
        self.signal(signal.SIGTERM)
        return await self.end()

    async def kill(self) -> None:
        """With SIGKILL, as a crash ends it."""
        self.signal(signal.SIGKILL)
        await self.end()

    def is_running(self) -> bool:
        return self._process is not None and self._process.poll() is None

    @property
    def log(self) -> str:
        return LOG.read_text(errors="replace")

    @property
    def errors(self) -> str:
        """What came on stderr of all that were started: a sanitizer's words as well."""
        return _ERRORS.read_text(errors="replace") if _ERRORS.exists() else ""


def _start(environment: dict[str, str], *command: str | Path) -> subprocess.Popen[bytes]:
    """The only place that starts a program of the unit's."""
    with _ERRORS.open("ab") as errors:
        return subprocess.Popen(command, env=_sanitizer_options() | environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=errors)


def _sanitizer_options() -> dict[str, str]:
    """Whole stacks, so that what a library left when it was loaded can be told apart; g++ 12's LeakSanitizer falls over
    the thread's data of libraries that were loaded later."""
    options = os.environ.get("ASAN_OPTIONS", "") + ":fast_unwind_on_malloc=0:intercept_tls_get_addr=0"
    return dict(os.environ) | {"ASAN_OPTIONS": options, "LSAN_OPTIONS": f"print_suppressions=0:suppressions={_LEAKS}"}
