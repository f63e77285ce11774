// The 29 methods: JSON in, JSON out.
#pragma once

#include <json/json.h>

#include "DeviceManager/DeviceManager.h"

class IpodManager;
struct BrowseLevel;

/// One member a method. Each writes the whole response ("jsonrpc", "id", "result") and returns true: a
/// refused operation shows in "result" only. A parameter of a type that cannot be converted leaves by the
/// JSON library's exception. Server thread only.
class CIpodRequestHandler {
  public:
    /// `manager` is not owned and outlives the handler.
    explicit CIpodRequestHandler(IpodManager* manager) : m_manager(manager) {}

    // Service and audio stream

    bool Start(const Json::Value& request, Json::Value& response);
    bool Stop(const Json::Value& request, Json::Value& response);
    bool Exit(const Json::Value& request, Json::Value& response);
    bool IsIpodConnected(const Json::Value& request, Json::Value& response);

    // Settings

    bool SetRepeatMode(const Json::Value& request, Json::Value& response);
    bool GetRepeatMode(const Json::Value& request, Json::Value& response);
    bool EnableShuffle(const Json::Value& request, Json::Value& response);
    bool IsShuffleEnabled(const Json::Value& request, Json::Value& response);

    // Current track

    bool GetCurrentTrackInfo(const Json::Value& request, Json::Value& response);
    bool GetCurrentAlbumArt(const Json::Value& request, Json::Value& response);
    bool GetCurrentAlbumArtDelayed(const Json::Value& request, Json::Value& response);
    bool IsTrackPaused(const Json::Value& request, Json::Value& response);
    bool GetHasPlayableData(const Json::Value& request, Json::Value& response);

    // Playback

    bool PlayFirst(const Json::Value& request, Json::Value& response);
    bool Play(const Json::Value& request, Json::Value& response);
    bool Pause(const Json::Value& request, Json::Value& response);
    bool PlayPause(const Json::Value& request, Json::Value& response);
    bool Next(const Json::Value& request, Json::Value& response);
    bool Previous(const Json::Value& request, Json::Value& response);
    bool FastForwardSong(const Json::Value& request, Json::Value& response);
    bool RewindSong(const Json::Value& request, Json::Value& response);

    // Browsing (IpodRequestHandlerBrowse.cpp)

    bool GetBrowseList(const Json::Value& request, Json::Value& response);
    bool SelectBrowseItem(const Json::Value& request, Json::Value& response);
    bool SelectBrowseBack(const Json::Value& request, Json::Value& response);
    bool FilterBrowseList(const Json::Value& request, Json::Value& response);
    bool ResetBrowseList(const Json::Value& request, Json::Value& response);
    bool GetSongList(const Json::Value& request, Json::Value& response);
    bool GetNextAlphaNumericIndex(const Json::Value& request, Json::Value& response);
    bool GetPrevAlphaNumericIndex(const Json::Value& request, Json::Value& response);

  private:
    IpodManager* m_manager;
};
