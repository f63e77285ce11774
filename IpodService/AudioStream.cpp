#include "IpodService/AudioStream.h"

#include "IpodService/GstreamerStreamer.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr const char* kCaptureDevice = "hw:1,0";

}  // namespace

AudioStream::AudioStream() = default;

AudioStream::~AudioStream() {
    Stop();
}

i32 AudioStream::Start() {
    const MutexLock lock(m_mutex);
    if (m_streamer) {
        LOG_INFO("not starting ipod stream\n");
        return 0;
    }
    StartNew(kElementsChooseRate);
    LOG_INFO("starting ipod stream\n");
    return 1;
}

i32 AudioStream::Stop() {
    const MutexLock lock(m_mutex);
    if (!m_streamer) {
        LOG_INFO("no ipod stream to stop\n");
        return 0;
    }
    LOG_INFO("stopping ipod stream\n");
    m_streamer->StopPipeline();
    m_streamer.reset();
    return 1;
}

i32 AudioStream::Restart(i32 sampleRate) {
    const MutexLock lock(m_mutex);
    if (!m_streamer) {
        LOG_ERROR("not restarting ipod stream\n");
        return 0;
    }
    LOG_INFO("restarting ipod stream\n");
    m_streamer->StopPipeline();
    StartNew(sampleRate);
    return 1;
}

void AudioStream::StartNew(i32 sampleRate) {
    m_streamer = std::make_unique<GstreamerStreamer>();
    m_streamer->SetSetting(0);
    m_streamer->SetDevice(kCaptureDevice);
    m_streamer->StartPipeline(sampleRate);
}
