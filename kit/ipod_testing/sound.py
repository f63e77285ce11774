"""Music of plain tones, and an ear at the unit's output: the simulated sound card's files, see docs/audio.md."""

from __future__ import annotations

import asyncio
import struct
import subprocess
import time
from pathlib import Path

from .build import Build

_RATE_AT = 24
TOLERANCE = 0.06
SILENCE = 0.0


class SoundCard:
    def __init__(self, build: Build, folder: Path) -> None:
        self._build = build
        self.music = folder / "music"
        self._files = folder / "sound"
        for made in (self.music, self._files):
            made.mkdir(parents=True)

    def environment(self) -> dict[str, str]:
        return {"ALSA_CONFIG_PATH": str(self._build.alsa_config),
                "DEVICE_SIMULATOR_AUDIO": str(self._files)}

    def music_environment(self) -> dict[str, str]:
        return {"DEVICE_SIMULATOR_LIBRARY": str(self.music), "DEVICE_SIMULATOR_CACHE": ""}

    def make_tone(self, name: str, hertz: int, *, rate: int = 44100, then: int | None = None) -> None:
        """A file of 40 seconds of which the second half may be another tone."""
        tones = [str(rate), str(hertz), str(then or hertz)]
        subprocess.run([self._build.make_tone, self.music / name, *tones], check=True)

    def rate(self) -> int:
        """What is played now is played at that many Hz."""
        with (self._files / "playback.wav").open("rb") as file:
            header = file.read(_RATE_AT + 4)
        return int(struct.unpack_from("<I", header, _RATE_AT)[0])

    def tone(self) -> float | None:
        """In Hz, of the newest 40 ms; None where there is not as much."""
        heard = subprocess.run([self._build.hear_tone, self._files / "playback.wav"],
                               capture_output=True, check=False)
        return float(heard.stdout) if heard.returncode == 0 else None

    async def hear(self, hertz: float) -> None:
        """Waits until that is heard; AssertionError when it is not in time."""
        deadline = time.monotonic() + self._build.patience
        while (heard := self.tone()) is None or abs(heard - hertz) > hertz * TOLERANCE:
            assert time.monotonic() < deadline, f"{hertz} Hz are not heard, but {heard}"
            await asyncio.sleep(0.01)
