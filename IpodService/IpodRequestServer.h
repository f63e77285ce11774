// The service's hub: the JSON-RPC server and its loop, and the notifications that go to every client.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/IIpodNotifications.h"
#include "IpodService/IpodManager.h"
#include "IpodService/IpodRequestHandler.h"
#include "JsonRpc/TcpServer.h"
#include "ServiceUtil/ISignalListener.h"
#include "ServiceUtil/Mutex.h"
#include "ServiceUtil/ThreadRole.h"

class CIpodRequestServer final : public ISignalListener, public IIpodNotifications {
  public:
    /// Main thread. Both as the manager takes them.
    explicit CIpodRequestServer(std::string pictureModule, DeviceFolders folders = {});
    /// Main thread, once Run has returned.
    ~CIpodRequestServer() override;

    /// Sets the TCP server up with the 29 methods. Once, by the main thread, before Run. Failures are logged.
    void Start(const std::string& address, u16 port);

    /// The server loop: serves clients and steps the manager until an exit is requested. Body of the server
    /// thread; lets no exception out.
    void Run();

    /// Returns once Run listens, or has failed to at its first try, or has ended. Main thread.
    void WaitForFirstTry() const { m_hasTried.wait(false); }

    /// The first SIGTERM or SIGINT stops the service in order, the second ends the process with status 1 and
    /// further ones change nothing. Each counts before it is logged, so that one whose entry is stuck in a
    /// full pipe does not hold up the next. The signal handler's threads; calls may overlap.
    void OnSignal(int signalNumber) override;

    // Reports of the manager: one notification each, to every client connected. Server thread and callback
    // thread.

    void OnTrackInfo(bool isPlaying, const NowPlayingPosition& position, const TrackMetadata& metadata,
                     const TrackTimes& times) override;
    void OnTrackTimes(const TrackTimes& times) override;
    void OnTrackTime(u32 time) override;
    void OnConnection(bool connected) override;
    void OnAlbumArt(const std::string& albumArt, u32 width, u32 height, int trackIndex) override;
    void OnTrackPaused(bool paused) override;

  private:
    void ServeUntilExit();
    void TellFirstTry();
    bool BindWithRetries() REQUIRES(kServerThread);
    void Serve() REQUIRES(kServerThread);
    /// Sleeps until there is something to do, and serves one client's turn.
    void WaitForClients() REQUIRES(kServerThread);
    /// Any thread.
    void WakeLoop() EXCLUDES(m_notificationMutex);
    void StopManager() REQUIRES(kServerThread);
    void CloseTcpServer() REQUIRES(kServerThread);
    void EndAtOnce(int signalNumber);
    void Broadcast(std::string notification) EXCLUDES(m_notificationMutex);

    // Declared before the manager, which may still be reporting while it is destroyed.

    /// Keeps the TCP server there while another thread uses it. Held for sends that do not wait.
    Mutex m_notificationMutex;
    std::unique_ptr<Json::Rpc::TcpServer> m_tcpServer;  ///< set before the threads start, null after the end
    std::string m_address;                              ///< set before the threads start
    u16 m_port = 0;

    IpodManager m_manager;
    CIpodRequestHandler m_handler;
    /// Whether the loop serves: kept for a reader in a debugger, nothing asks for it.
    std::atomic<bool> m_serverRunning{false};
    std::atomic_flag m_hasTried;            ///< to listen
    std::atomic<bool> m_isStopping{false};  ///< the first signal has come
    std::atomic<bool> m_isEnding{false};    ///< the second one has come: exit() is for one thread alone
};
