// One audio pipeline from the player's capture device to the default output.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "DeviceManager/DeviceManager.h"

/// Copies what an ALSA capture device delivers to the default ALSA output. Its owner makes one call at a
/// time, from whatever thread; the pipeline's messages arrive on the thread that runs the default main
/// context. The owner stops the pipeline before it deletes the streamer.
class GstreamerStreamer {
  public:
    GstreamerStreamer() = default;
    virtual ~GstreamerStreamer() = default;
    GstreamerStreamer(const GstreamerStreamer&) = delete;
    GstreamerStreamer& operator=(const GstreamerStreamer&) = delete;

    void SetSetting(u32 setting) { m_setting = setting; }
    /// The ALSA device that the next pipeline captures from.
    void SetDevice(std::string device) { m_device = std::move(device); }

    /// Builds and plays a new pipeline in place of one that exists. `sampleRate` in Hz; 0 or less leaves the
    /// rate to the elements. Always 1: what goes wrong comes as a message of the pipeline and is logged.
    i32 StartPipeline(i32 sampleRate);
    /// Once this has returned no message of the pipeline is handled any more and none is being handled.
    void StopPipeline();
    void PausePipeline();
    void PlayPipeline();

  private:
    class Pipeline;

    u32 m_setting = 0;
    std::string m_device = "hw:1,0";
    std::shared_ptr<Pipeline> m_pipeline;  ///< null while stopped; shared with its own bus watch
};
