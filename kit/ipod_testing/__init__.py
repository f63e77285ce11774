"""What a scenario is written with: the service as a process, the simulated player's control channel, the sound."""

from .control import Refused, SimulatedPlayer
from .recorder import Recorder
from .scene import Scene
from .service import Service
from .sound import SoundCard

__all__ = ["Recorder", "Refused", "Scene", "Service", "SimulatedPlayer", "SoundCard"]
