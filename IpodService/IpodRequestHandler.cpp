#include "IpodService/IpodRequestHandler.h"

#include <string>

#include "IpodService/IpodManager.h"
#include "IpodService/Responses.h"
#include "IpodService/TrackText.h"

namespace {

u32 RepeatModeFromWord(const std::string& word) {
    if (word == "all") {
        return E_DEVMGR_IPOD_REPEAT_ALL;
    }
    return word == "current" ? E_DEVMGR_IPOD_REPEAT_ONE : E_DEVMGR_IPOD_REPEAT_NONE;
}

const char* WordFromRepeatMode(i32 mode) {
    if (mode == E_DEVMGR_IPOD_REPEAT_ALL) {
        return "all";
    }
    return mode == E_DEVMGR_IPOD_REPEAT_ONE ? "current" : "off";
}

bool IsShuffled(i32 mode) {
    return mode == E_DEVMGR_IPOD_SHUFFLE_TRACKS || mode == E_DEVMGR_IPOD_SHUFFLE_ALBUMS;
}

}  // namespace

bool CIpodRequestHandler::Start(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"] = StatusWord(m_manager->StartStream() != 0);
    return true;
}

bool CIpodRequestHandler::Stop(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"] = StatusWord(m_manager->StopStream() != 0);
    return true;
}

bool CIpodRequestHandler::Exit(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    m_manager->RequestExit();
    response["result"] = StatusWord(true);
    return true;
}

bool CIpodRequestHandler::IsIpodConnected(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["connected"] = m_manager->IsDeviceConnected();
    return true;
}

bool CIpodRequestHandler::SetRepeatMode(const Json::Value& request, Json::Value& response) {
    const Json::Value& params = request["params"];
    if (!params.isNull()) {
        m_manager->SetRepeat(RepeatModeFromWord(params["mode"].asString()));
    }
    return GetRepeatMode(request, response);
}

bool CIpodRequestHandler::GetRepeatMode(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["mode"] = WordFromRepeatMode(m_manager->GetRepeat());
    return true;
}

bool CIpodRequestHandler::EnableShuffle(const Json::Value& request, Json::Value& response) {
    const Json::Value& params = request["params"];
    if (!params.isNull()) {
        m_manager->SetShuffle(params["enable"].asBool() ? E_DEVMGR_IPOD_SHUFFLE_TRACKS
                                                        : E_DEVMGR_IPOD_SHUFFLE_NONE);
    }
    return IsShuffleEnabled(request, response);
}

bool CIpodRequestHandler::IsShuffleEnabled(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["enabled"] = IsShuffled(m_manager->GetShuffle());
    return true;
}

bool CIpodRequestHandler::GetCurrentTrackInfo(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    const TrackMetadata metadata = m_manager->GetTrackMetadata();
    const TrackTimes times = m_manager->GetTrackTime();
    Json::Value trackInfo = TrackTextsToJson(metadata);
    // The method reports no position and does not ask whether the device plays; clients know these values.
    trackInfo["trackIndex"] = -1;
    trackInfo["trackCount"] = 1;
    trackInfo["trackTime"] = times.elapsed;
    trackInfo["trackDuration"] = times.total;
    trackInfo["isPlaying"] = true;
    response["result"]["trackInfo"] = std::move(trackInfo);
    m_manager->RequestPlayStatus();
    return true;
}

bool CIpodRequestHandler::GetCurrentAlbumArt(const Json::Value&, std::string& result) {
    std::string text;
    u32 width = 0;
    u32 height = 0;
    if (m_manager->GetPlayingTrackAlbumArt(text, width, height) != 0) {
        result = "{\"albumArt\":\"\"}";
        return true;
    }
    result.reserve(text.size() + 80);
    result.append("{\"albumArt\":\"").append(text);
    result.append("\",\"imageHeight\":").append(std::to_string(height));
    result.append(",\"imageWidth\":").append(std::to_string(width)).append("}");
    return true;
}

bool CIpodRequestHandler::GetCurrentAlbumArtDelayed(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["success"] = m_manager->RequestDelayedAlbumArt() == 0;
    return true;
}

bool CIpodRequestHandler::IsTrackPaused(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["isPaused"] = m_manager->IsPaused();
    return true;
}

bool CIpodRequestHandler::GetHasPlayableData(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["hasPlayableData"] = m_manager->GetHasPlayableData();
    return true;
}

bool CIpodRequestHandler::PlayFirst(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["success"] = m_manager->PlayFirstTrack() == 0;
    return true;
}

bool CIpodRequestHandler::Play(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    if (m_manager->IsStopped()) {
        response["result"]["success"] = m_manager->PlayFirstTrack() == 0;
    } else if (!m_manager->IsPlaying()) {
        response["result"]["success"] = m_manager->Play() == 0;
    } else {
        response["result"] = Json::Value();
    }
    return true;
}

bool CIpodRequestHandler::Pause(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["success"] = !m_manager->IsPaused() && m_manager->Pause() == 0;
    return true;
}

bool CIpodRequestHandler::PlayPause(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["success"] = m_manager->TogglePlayPause();
    return true;
}

bool CIpodRequestHandler::Next(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["success"] = m_manager->NextTrack() == 0;
    return true;
}

bool CIpodRequestHandler::Previous(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["success"] = m_manager->PreviousTrack() == 0;
    return true;
}

bool CIpodRequestHandler::FastForwardSong(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    const bool enable = request["params"]["enable"].asBool();
    response["result"]["enabled"] = m_manager->TrackFastForward(enable) == 0;
    return true;
}

bool CIpodRequestHandler::RewindSong(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    const bool enable = request["params"]["enable"].asBool();
    response["result"]["enabled"] = m_manager->TrackRewind(enable) == 0;
    return true;
}
