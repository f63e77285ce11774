// The manager's audio stream: at most one streamer, replaced as a whole at every restart.
#include "IpodService/GstreamerStreamer.h"
#include "IpodService/IpodManager.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr const char* kCaptureDevice = "hw:1,0";
constexpr i32 kElementsChooseRate = -1;

void StartNew(std::unique_ptr<GstreamerStreamer>& streamer, i32 sampleRate) {
    streamer = std::make_unique<GstreamerStreamer>();
    streamer->SetSetting(0);
    streamer->SetDevice(kCaptureDevice);
    streamer->StartPipeline(sampleRate);
}

}  // namespace

i32 IpodManager::StartStream() {
    std::lock_guard lock(m_streamMutex);
    if (m_streamer) {
        LOG_INFO("not starting ipod stream\n");
        return 0;
    }
    StartNew(m_streamer, kElementsChooseRate);
    LOG_INFO("starting ipod stream\n");
    return 1;
}

i32 IpodManager::StopStream() {
    std::lock_guard lock(m_streamMutex);
    if (!m_streamer) {
        LOG_INFO("no ipod stream to stop\n");
        return 0;
    }
    LOG_INFO("stopping ipod stream\n");
    m_streamer->StopPipeline();
    m_streamer.reset();
    return 1;
}

i32 IpodManager::RestartStream(i32 sampleRate) {
    std::lock_guard lock(m_streamMutex);
    if (!m_streamer) {
        LOG_ERROR("not restarting ipod stream\n");
        return 0;
    }
    LOG_INFO("restarting ipod stream\n");
    m_streamer->StopPipeline();
    StartNew(m_streamer, sampleRate);
    return 1;
}

void IpodManager::ProcessDelayedStreamRestart() {
    if (!m_streamRestartPending.exchange(false)) {
        return;
    }
    LOG_WARN("performing delayed audio stream restart!\n");
    RestartStream(kElementsChooseRate);
}
