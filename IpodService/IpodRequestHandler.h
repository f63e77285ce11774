// The 29 methods: JSON in, JSON out.
#pragma once

#include <json/json.h>

#include <string>

#include "ServiceUtil/ThreadRole.h"

class IpodManager;

/// One member a method. Each writes the whole response ("jsonrpc", "id", "result") and returns true: a
/// refused operation shows in "result" only. Where that may be large, the member writes its JSON text; left
/// empty, the response has no "result". A parameter of a type that cannot be converted leaves by the
/// JSON library's exception. Server thread only.
class CIpodRequestHandler {
  public:
    /// `manager` is not owned and outlives the handler.
    explicit CIpodRequestHandler(IpodManager* manager) : m_manager(manager) {}

    // Service and audio stream

    bool Start(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool Stop(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool Exit(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool IsIpodConnected(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);

    // Settings

    bool SetRepeatMode(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool GetRepeatMode(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool EnableShuffle(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool IsShuffleEnabled(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);

    // Current track

    bool GetCurrentTrackInfo(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool GetCurrentAlbumArt(const Json::Value& request, std::string& result) REQUIRES(kServerThread);
    bool GetCurrentAlbumArtDelayed(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool IsTrackPaused(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool GetHasPlayableData(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);

    // Playback

    bool PlayFirst(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool Play(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool Pause(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool PlayPause(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool Next(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool Previous(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool FastForwardSong(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool RewindSong(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);

    // Browsing (IpodRequestHandlerBrowse.cpp)

    bool GetBrowseList(const Json::Value& request, std::string& result) REQUIRES(kServerThread);
    bool SelectBrowseItem(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool SelectBrowseBack(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool FilterBrowseList(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool ResetBrowseList(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool GetSongList(const Json::Value& request, std::string& result) REQUIRES(kServerThread);
    bool GetNextAlphaNumericIndex(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);
    bool GetPrevAlphaNumericIndex(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread);

  private:
    IpodManager* m_manager;
};
