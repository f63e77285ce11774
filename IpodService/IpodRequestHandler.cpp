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

std::string WordFromRepeatMode(i32 mode) {
    if (mode == E_DEVMGR_IPOD_REPEAT_ALL) {
        return "all";
    }
    return mode == E_DEVMGR_IPOD_REPEAT_ONE ? "current" : "off";
}

bool IsShuffled(i32 mode) {
    return mode == E_DEVMGR_IPOD_SHUFFLE_TRACKS || mode == E_DEVMGR_IPOD_SHUFFLE_ALBUMS;
}

}  // namespace

bool CIpodRequestHandler::Start(const Request&, std::string& result) {
    return AppendStatus(result, m_manager->StartStream() != 0);
}

bool CIpodRequestHandler::Stop(const Request&, std::string& result) {
    return AppendStatus(result, m_manager->StopStream() != 0);
}

bool CIpodRequestHandler::Exit(const Request&, std::string& result) {
    m_manager->RequestExit();
    return AppendStatus(result, true);
}

bool CIpodRequestHandler::IsIpodConnected(const Request&, std::string& result) {
    return AppendMember(result, "connected", m_manager->IsDeviceConnected());
}

bool CIpodRequestHandler::SetRepeatMode(const Request& request, std::string& result) {
    const Json::Value& params = request.Params();
    if (!params.isNull()) {
        m_manager->SetRepeat(RepeatModeFromWord(params["mode"].asString()));
    }
    return GetRepeatMode(request, result);
}

bool CIpodRequestHandler::GetRepeatMode(const Request&, std::string& result) {
    return AppendMember(result, "mode", WordFromRepeatMode(m_manager->GetRepeat()));
}

bool CIpodRequestHandler::EnableShuffle(const Request& request, std::string& result) {
    const Json::Value& params = request.Params();
    if (!params.isNull()) {
        m_manager->SetShuffle(params["enable"].asBool() ? E_DEVMGR_IPOD_SHUFFLE_TRACKS
                                                        : E_DEVMGR_IPOD_SHUFFLE_NONE);
    }
    return IsShuffleEnabled(request, result);
}

bool CIpodRequestHandler::IsShuffleEnabled(const Request&, std::string& result) {
    return AppendMember(result, "enabled", IsShuffled(m_manager->GetShuffle()));
}

bool CIpodRequestHandler::GetCurrentTrackInfo(const Request&, std::string& result) {
    const TrackMetadata metadata = m_manager->GetTrackMetadata();
    const TrackTimes times = m_manager->GetTrackTime();
    // The method reports no position and does not ask whether the device plays; clients know these values.
    AppendTrackInfo(result, {metadata, times, -1, 1, true});
    m_manager->RequestPlayStatus();
    return true;
}

bool CIpodRequestHandler::GetCurrentAlbumArt(const Request&, std::string& result) {
    u32 width = 0;
    u32 height = 0;
    Json::Rpc::ObjectText picture(result);
    picture.Begin("albumArt") += '"';
    const bool isFetched = m_manager->GetPlayingTrackAlbumArt(result, width, height) == 0;
    result += '"';
    if (isFetched) {
        picture.Add("imageHeight", height).Add("imageWidth", width);
    }
    picture.End();
    return true;
}

bool CIpodRequestHandler::GetCurrentAlbumArtDelayed(const Request&, std::string& result) {
    return AppendMember(result, "success", m_manager->RequestDelayedAlbumArt() == 0);
}

bool CIpodRequestHandler::IsTrackPaused(const Request&, std::string& result) {
    return AppendMember(result, "isPaused", m_manager->IsPaused());
}

bool CIpodRequestHandler::GetHasPlayableData(const Request&, std::string& result) {
    return AppendMember(result, "hasPlayableData", m_manager->GetHasPlayableData());
}

bool CIpodRequestHandler::PlayFirst(const Request&, std::string& result) {
    return AppendMember(result, "success", m_manager->PlayFirstTrack() == 0);
}

bool CIpodRequestHandler::Play(const Request&, std::string& result) {
    if (m_manager->IsStopped()) {
        return AppendMember(result, "success", m_manager->PlayFirstTrack() == 0);
    }
    if (!m_manager->IsPlaying()) {
        return AppendMember(result, "success", m_manager->Play() == 0);
    }
    result += "null";
    return true;
}

bool CIpodRequestHandler::Pause(const Request&, std::string& result) {
    return AppendMember(result, "success", !m_manager->IsPaused() && m_manager->Pause() == 0);
}

bool CIpodRequestHandler::PlayPause(const Request&, std::string& result) {
    return AppendMember(result, "success", m_manager->TogglePlayPause());
}

bool CIpodRequestHandler::Next(const Request&, std::string& result) {
    return AppendMember(result, "success", m_manager->NextTrack() == 0);
}

bool CIpodRequestHandler::Previous(const Request&, std::string& result) {
    return AppendMember(result, "success", m_manager->PreviousTrack() == 0);
}

bool CIpodRequestHandler::FastForwardSong(const Request& request, std::string& result) {
    const bool enable = request.Params()["enable"].asBool();
    return AppendMember(result, "enabled", m_manager->TrackFastForward(enable) == 0);
}

bool CIpodRequestHandler::RewindSong(const Request& request, std::string& result) {
    const bool enable = request.Params()["enable"].asBool();
    return AppendMember(result, "enabled", m_manager->TrackRewind(enable) == 0);
}
