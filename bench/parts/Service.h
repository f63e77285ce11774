// The service's methods in this process, over the quick player and without a wire: text in, text out.
#pragma once

#include <string>
#include <string_view>

#include "IpodService/IpodManager.h"
#include "IpodService/IpodRequestHandler.h"
#include "JsonRpc/Server.h"

namespace Bench {

class Silent : public IIpodNotifications {
  public:
    void OnTrackInfo(bool, const NowPlayingPosition&, const TrackMetadata&, const TrackTimes&) override {}
    void OnTrackTimes(const TrackTimes&) override {}
    void OnTrackTime(u32) override {}
    void OnConnection(bool) override {}
    void OnAlbumArt(const std::string&, u32, u32, int) override {}
    void OnTrackPaused(bool) override {}
};

/// One for the whole process, with a player that can be browsed, and the log at the service's default level
/// in a file in memory.
class Service {
  public:
    static Service& Instance();

    std::string Execute(std::string_view request) { return m_server.Execute(request); }
    /// The list of all songs becomes the current one.
    void EnterSongs();
    IpodManager& Manager() { return m_manager; }

  private:
    /// Before the manager, which has something to say.
    struct Log {
        Log();
    };

    Service();

    Log m_log;
    Silent m_notifications;
    IpodManager m_manager{&m_notifications, {"/nowhere/iap2db", "/nowhere"}};
    CIpodRequestHandler m_handler{&m_manager};
    Json::Rpc::Server m_server;
};

inline constexpr const char* kLogPath = "/dev/shm/ipod-bench.log";

/// What is left of the log's memory after a benchmark is none of the next one's.
void EmptyLog();

}  // namespace Bench
