// The manager's reports as JSON-RPC notifications.

#include "IpodService/IpodRequestServer.h"
#include "IpodService/TrackText.h"
#include "JsonRpc/ObjectText.h"
#include "ServiceUtil/Logger.h"

namespace {

using Json::Rpc::ObjectText;

/// A notification of `method`, of which `append` writes the params.
template <typename Append>
std::string NotificationText(const char* method, Append append) {
    std::string text = "{\"jsonrpc\":\"2.0\",\"method\":\"";
    text.append(method).append("\",\"params\":");
    append(text);
    return text.append("}\n");
}

}  // namespace

void CIpodRequestServer::OnTrackInfo(bool isPlaying, const NowPlayingPosition& position,
                                     const TrackMetadata& metadata, const TrackTimes& times) {
    const u32 index = position.index + 1;
    Broadcast(NotificationText("trackInfoNotification", [&](std::string& params) {
        AppendTrackInfo(params, {metadata, times, index, position.count, isPlaying});
    }));
}

void CIpodRequestServer::OnTrackTimes(const TrackTimes& times) {
    Broadcast(NotificationText("trackTimeNotification", [&](std::string& params) {
        ObjectText(params).Add("trackDuration", times.total).Add("trackTime", times.elapsed).End();
    }));
}

void CIpodRequestServer::OnTrackTime(u32 time) {
    Broadcast(NotificationText("trackTimeNotification", [&](std::string& params) {
        ObjectText(params).Add("trackTime", time).End();
    }));
}

void CIpodRequestServer::OnConnection(bool connected) {
    Broadcast(NotificationText("ipodConnectionNotification", [&](std::string& params) {
        ObjectText(params).Add("connected", connected).End();
    }));
}

void CIpodRequestServer::OnAlbumArt(const std::string& albumArt, u32 width, u32 height, int trackIndex) {
    LOG_DEBUG("Sending ipod Track AlbumArt Notification\n");
    Broadcast(NotificationText("ipodAlbumArtNotification", [&](std::string& params) {
        ObjectText picture(params);
        picture.Begin("albumArt").append(1, '"').append(albumArt).append(1, '"');
        picture.Add("imageHeight", height).Add("imageWidth", width).Add("trackIndex", trackIndex).End();
    }));
}

void CIpodRequestServer::OnTrackPaused(bool paused) {
    LOG_DEBUG("Sending ipod track paused Notification: %d\n", paused ? 1 : 0);
    Broadcast(NotificationText("trackPausedNotification", [&](std::string& params) {
        ObjectText(params).Add("isTrackPaused", paused).End();
    }));
}

void CIpodRequestServer::Broadcast(std::string notification) {
    const MutexLock lock(m_notificationMutex);
    if (m_tcpServer != nullptr) {
        m_tcpServer->Broadcast(std::move(notification));
    }
}
