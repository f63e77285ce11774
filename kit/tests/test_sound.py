"""What is heard, and at which rate."""

from ipod_testing import Scene
from ipod_testing.sound import SILENCE


async def test_another_rate_is_heard_at_that_rate(bare_scene: Scene) -> None:
    sound = bare_scene.sound
    sound.make_tone("1.flac", 500, rate=44100)
    sound.make_tone("2.flac", 1100, rate=48000)
    bare_scene.environment |= sound.music_environment()
    async with bare_scene.running() as scene:
        await scene.plug_ready()
        assert await scene.client.start() == "success"
        assert await scene.client.playFirst() == {"success": True}
        await sound.hear(500)
        assert sound.rate() == 44100
        assert await scene.client.next() == {"success": True}
        await sound.hear(1100)
        assert sound.rate() == 48000
        assert await scene.client.pause() == {"success": True}
        await sound.hear(SILENCE)
        assert await scene.client.stop() == "success"
