#include "IpodService/IpodRequestServer.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "IpodService/GuardedSteps.h"
#include "IpodService/MainLoop.h"
#include "JsonRpc/Networking.h"
#include "JsonRpc/RpcMethod.h"
#include "ServiceUtil/Logger.h"
#include "ServiceUtil/ProcessEnd.h"

namespace {

constexpr int kBindTries = 33;
constexpr std::chrono::milliseconds kBindPause{250};
constexpr int kEndedAtOnce = 1;  ///< exit status
constexpr std::chrono::milliseconds kExitPatience{500};

struct Method {
    const char* name;
    Json::Rpc::RpcMethod<CIpodRequestHandler>::Member member;
};

constexpr std::array kMethods = {
    Method{"start", &CIpodRequestHandler::Start},
    Method{"stop", &CIpodRequestHandler::Stop},
    Method{"exit", &CIpodRequestHandler::Exit},
    Method{"isIpodConnected", &CIpodRequestHandler::IsIpodConnected},
    Method{"setRepeatMode", &CIpodRequestHandler::SetRepeatMode},
    Method{"getRepeatMode", &CIpodRequestHandler::GetRepeatMode},
    Method{"enableShuffle", &CIpodRequestHandler::EnableShuffle},
    Method{"isShuffleEnabled", &CIpodRequestHandler::IsShuffleEnabled},
    Method{"getCurrentTrackInfo", &CIpodRequestHandler::GetCurrentTrackInfo},
    Method{"getCurrentAlbumArt", &CIpodRequestHandler::GetCurrentAlbumArt},
    Method{"getCurrentAlbumArtDelayed", &CIpodRequestHandler::GetCurrentAlbumArtDelayed},
    Method{"playFirst", &CIpodRequestHandler::PlayFirst},
    Method{"play", &CIpodRequestHandler::Play},
    Method{"pause", &CIpodRequestHandler::Pause},
    Method{"playPause", &CIpodRequestHandler::PlayPause},
    Method{"next", &CIpodRequestHandler::Next},
    Method{"previous", &CIpodRequestHandler::Previous},
    Method{"getBrowseList", &CIpodRequestHandler::GetBrowseList},
    Method{"selectBrowseItem", &CIpodRequestHandler::SelectBrowseItem},
    Method{"selectBrowseBack", &CIpodRequestHandler::SelectBrowseBack},
    Method{"filterBrowseList", &CIpodRequestHandler::FilterBrowseList},
    Method{"fastForwardSong", &CIpodRequestHandler::FastForwardSong},
    Method{"rewindSong", &CIpodRequestHandler::RewindSong},
    Method{"resetBrowseList", &CIpodRequestHandler::ResetBrowseList},
    Method{"isTrackPaused", &CIpodRequestHandler::IsTrackPaused},
    Method{"getSongList", &CIpodRequestHandler::GetSongList},
    Method{"getNextAlphaNumericIndex", &CIpodRequestHandler::GetNextAlphaNumericIndex},
    Method{"getPrevAlphaNumericIndex", &CIpodRequestHandler::GetPrevAlphaNumericIndex},
    Method{"getHasPlayableData", &CIpodRequestHandler::GetHasPlayableData},
};
static_assert(kMethods.size() == 29);

bool IsLoopback(const std::string& address) {
    return address.starts_with("127.") || address == "::1";
}

void LogClosedClient(const Json::Rpc::ClosedClient& client) {
    LOG_WARN("Ipod Service - a client was disconnected after %lld ms: it %s\n",
             static_cast<long long>(client.connected.count()), Json::Rpc::ToText(client.reason));
}

}  // namespace

CIpodRequestServer::CIpodRequestServer(std::string pictureModule, DeviceFolders folders)
    : m_manager(
          this, std::move(folders), [this] { WakeLoop(); }, std::move(pictureModule)),
      m_handler(&m_manager) {}

CIpodRequestServer::~CIpodRequestServer() {
    // A device manager that refused to let the process go may still be sending events.
    const MutexLock lock(m_notificationMutex);
    m_tcpServer.reset();
}

void CIpodRequestServer::Start(const std::string& address, u16 port) {
    m_address = address;
    m_port = port;
    {
        const MutexLock lock(m_notificationMutex);
        m_tcpServer = std::make_unique<Json::Rpc::TcpServer>(address, port);
    }
    if (!networking::init()) {
        LOG_ERROR("Networking initialization failed\n");
        return;
    }
    for (const Method& method : kMethods) {
        m_tcpServer->AddMethod(std::make_unique<Json::Rpc::RpcMethod<CIpodRequestHandler>>(
            m_handler, method.member, method.name));
    }
}

void CIpodRequestServer::Run() {
    TakeSteps(*this, {&CIpodRequestServer::ServeUntilExit});
    TellFirstTry();
}

void CIpodRequestServer::TellFirstTry() {
    m_hasTried.test_and_set();
    m_hasTried.notify_all();
}

void CIpodRequestServer::ServeUntilExit() {
    kServerThread.Assert();
    m_serverRunning = true;
    if (!BindWithRetries()) {
        return;
    }
    if (!m_tcpServer->Listen()) {
        m_serverRunning = false;
        LOG_FATAL("Ipod Service - Listen failed\n");
        return;
    }
    TellFirstTry();
    if (IpodManager::ResetAuthCoprocessor()) {
        Serve();
        StopManager();
    } else {
        LOG_ERROR("Cannot gpio_ac_rst_cycle successfully \n");
    }
    CloseTcpServer();
}

bool CIpodRequestServer::BindWithRetries() {
    // An earlier run may have left the port in use for a while.
    for (int tries = 1; !m_tcpServer->Bind(); ++tries) {
        LOG_WARN("Ipod Service - Bind failed\n");
        if (tries == 1) {
            LOG_WARN("Ipod Service - cannot bind %s:%d: %s\n", m_address.c_str(), int{m_port},
                     m_tcpServer->GetBindError().c_str());
        }
        if (tries == kBindTries) {
            m_serverRunning = false;
            LOG_FATAL("Ipod Service - Bind failed\n");
            return false;
        }
        TellFirstTry();
        std::this_thread::sleep_for(kBindPause);
    }
    return true;
}

void CIpodRequestServer::Serve() {
    m_serverRunning = true;
    if (!IsLoopback(m_address)) {
        LOG_WARN("Ipod Service - listens on %s without any authentication\n", m_address.c_str());
    }
    m_tcpServer->SetPauseTest([this] { return m_manager.IsExitRequested(); });
    m_tcpServer->SetCloseListener(LogClosedClient);
    while (!m_manager.IsExitRequested()) {
        TakeSteps(*this, {&CIpodRequestServer::WaitForClients});
        TakeSteps(m_manager, {&IpodManager::UpdateConnection, &IpodManager::ProcessDelayedStreamRestart,
                              &IpodManager::ProcessDelayedAlbumArt, &IpodManager::UpdatePlayStatus,
                              &IpodManager::UpdateTrackTime, &IpodManager::ProcessDelayedClose});
    }
}

void CIpodRequestServer::WaitForClients() {
    m_tcpServer->WaitMessage(static_cast<int>(m_manager.TimeToNextStep().count()));
}

void CIpodRequestServer::WakeLoop() {
    const MutexLock lock(m_notificationMutex);
    if (m_tcpServer != nullptr) {
        m_tcpServer->Wake();
    }
}

void CIpodRequestServer::StopManager() {
    TakeSteps(m_manager,
              {&IpodManager::CloseBrowseSession, &IpodManager::CloseDevice, &IpodManager::Shutdown});
}

void CIpodRequestServer::CloseTcpServer() {
    LOG_DEBUG("Stop JSON-RPC TCP server\n");
    m_tcpServer->Close();
    networking::cleanup();
}

void CIpodRequestServer::OnSignal(int signalNumber) {
    if (signalNumber != SIGINT && signalNumber != SIGTERM) {
        return;
    }
    // What ends the server by other means counts as a first signal.
    if (m_isStopping.exchange(true) || m_manager.IsExitRequested()) {
        EndAtOnce(signalNumber);
        return;
    }
    // The entry first: it stands before those of the stop.
    LOG_WARN("Exit signal caught: %d\n", signalNumber);
    MainLoop::Quit();
    m_manager.RequestExit();
}

void CIpodRequestServer::EndAtOnce(int signalNumber) {
    if (m_isEnding.exchange(true)) {
        return;
    }
    EndProcessAfter(kExitPatience, kEndedAtOnce);
    LOG_WARN("Double Exit signal caught: %d\n", signalNumber);
    std::exit(kEndedAtOnce);
}
