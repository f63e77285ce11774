"""What was built, and how long its programs may take."""

from __future__ import annotations

from dataclasses import dataclass
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
SANDBOX = SOURCE / "tests/EndToEnd/sandbox.sh"


@dataclass(frozen=True)
class Build:
    folder: Path

    @property
    def service(self) -> Path:
        return self.folder / "IpodService/ipod-service"

    @property
    def player(self) -> Path:
        return self.folder / "DeviceSimulator/simulated-player"

    @property
    def send_command(self) -> Path:
        return self.folder / "DeviceSimulator/ipodsim"

    @property
    def make_tone(self) -> Path:
        return self.folder / "DeviceSimulator/make-tone-file"

    @property
    def hear_tone(self) -> Path:
        return self.folder / "DeviceSimulator/hear-tone"

    @property
    def alsa_config(self) -> Path:
        return self.folder / "DeviceSimulator/card/asound.conf"

    @property
    def patience(self) -> float:
        """Seconds for what takes a moment on an idle machine. Sanitizers slow everything down."""
        cache = (self.folder / "CMakeCache.txt").read_text()
        return 10.0 if "\nIPOD_SANITIZER:STRING=\n" in cache else 60.0
