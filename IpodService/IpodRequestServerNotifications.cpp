// The manager's reports as JSON-RPC notifications.

#include "IpodService/IpodRequestServer.h"
#include "IpodService/TrackText.h"
#include "JsonRpc/Text.h"
#include "ServiceUtil/Logger.h"

void CIpodRequestServer::OnTrackInfo(bool isPlaying, const NowPlayingPosition& position,
                                     const TrackMetadata& metadata, const TrackTimes& times) {
    Json::Value trackInfo = TrackTextsToJson(metadata);
    trackInfo["trackIndex"] = position.index + 1;
    trackInfo["trackCount"] = position.count;
    trackInfo["trackTime"] = times.elapsed;
    trackInfo["trackDuration"] = times.total;
    trackInfo["isPlaying"] = isPlaying;
    Json::Value params;
    params["trackInfo"] = std::move(trackInfo);
    Notify("trackInfoNotification", std::move(params));
}

void CIpodRequestServer::OnTrackTimes(const TrackTimes& times) {
    Json::Value params;
    params["trackTime"] = times.elapsed;
    params["trackDuration"] = times.total;
    Notify("trackTimeNotification", std::move(params));
}

void CIpodRequestServer::OnTrackTime(u32 time) {
    Json::Value params;
    params["trackTime"] = time;
    Notify("trackTimeNotification", std::move(params));
}

void CIpodRequestServer::OnConnection(bool connected) {
    Json::Value params;
    params["connected"] = connected;
    Notify("ipodConnectionNotification", std::move(params));
}

void CIpodRequestServer::OnAlbumArt(const std::string& albumArt, u32 width, u32 height, int trackIndex) {
    LOG_DEBUG("Sending ipod Track AlbumArt Notification\n");
    Json::Value params;
    params["albumArt"] = albumArt;
    params["imageWidth"] = width;
    params["imageHeight"] = height;
    params["trackIndex"] = trackIndex;
    Notify("ipodAlbumArtNotification", std::move(params));
}

void CIpodRequestServer::OnTrackPaused(bool paused) {
    LOG_DEBUG("Sending ipod track paused Notification: %d\n", paused ? 1 : 0);
    Json::Value params;
    params["isTrackPaused"] = paused;
    Notify("trackPausedNotification", std::move(params));
}

void CIpodRequestServer::Notify(const char* method, Json::Value params) {
    Json::Value notification;
    notification["jsonrpc"] = "2.0";
    notification["method"] = method;
    notification["params"] = std::move(params);
    Broadcast(notification);
}

void CIpodRequestServer::Broadcast(const Json::Value& notification) {
    const MutexLock lock(m_notificationMutex);
    if (m_tcpServer == nullptr) {
        return;
    }
    m_tcpServer->Broadcast(Json::Rpc::ToText(notification));
}
