// The 29 methods: JSON in, JSON out.
#pragma once

#include <string>

#include "JsonRpc/Request.h"
#include "ServiceUtil/ThreadRole.h"

class IpodManager;

/// One member a method. Each appends the JSON text of "result", nothing for a reply without it, and returns
/// true: a refused operation shows in "result" only. Clients know the members of results in the order of the
/// alphabet. A parameter of a type that cannot be converted leaves by the JSON library's exception. Server
/// thread only.
class CIpodRequestHandler {
  public:
    using Request = Json::Rpc::Request;

    /// `manager` is not owned and outlives the handler.
    explicit CIpodRequestHandler(IpodManager* manager) : m_manager(manager) {}

    // Service and audio stream

    bool Start(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool Stop(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool Exit(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool IsIpodConnected(const Request& request, std::string& result) REQUIRES(kServerThread);

    // Settings

    bool SetRepeatMode(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool GetRepeatMode(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool EnableShuffle(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool IsShuffleEnabled(const Request& request, std::string& result) REQUIRES(kServerThread);

    // Current track

    bool GetCurrentTrackInfo(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool GetCurrentAlbumArt(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool GetCurrentAlbumArtDelayed(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool IsTrackPaused(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool GetHasPlayableData(const Request& request, std::string& result) REQUIRES(kServerThread);

    // Playback

    bool PlayFirst(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool Play(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool Pause(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool PlayPause(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool Next(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool Previous(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool FastForwardSong(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool RewindSong(const Request& request, std::string& result) REQUIRES(kServerThread);

    // Browsing (IpodRequestHandlerBrowse.cpp)

    bool GetBrowseList(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool SelectBrowseItem(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool SelectBrowseBack(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool FilterBrowseList(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool ResetBrowseList(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool GetSongList(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool GetNextAlphaNumericIndex(const Request& request, std::string& result) REQUIRES(kServerThread);
    bool GetPrevAlphaNumericIndex(const Request& request, std::string& result) REQUIRES(kServerThread);

  private:
    IpodManager* m_manager;
};
