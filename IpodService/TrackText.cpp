#include "IpodService/TrackText.h"

#include "JsonRpc/ObjectText.h"
#include "ServiceUtil/Utf8.h"

namespace {

std::string Mended(const std::string& field) {
    return WellFormedUtf8(field, sizeof(TrackMetadataRecord::title));
}

}  // namespace

void AppendTrackInfo(std::string& text, const TrackInfo& track) {
    Json::Rpc::ObjectText outer(text);
    Json::Rpc::ObjectText info(outer.Begin("trackInfo"));
    info.Add("isPlaying", track.isPlaying)
        .Add("trackAlbum", Mended(track.metadata.album))
        .Add("trackArtist", Mended(track.metadata.artist))
        .Add("trackCount", track.count)
        .Add("trackDuration", track.times.total)
        .Add("trackIndex", track.index)
        .Add("trackTime", track.times.elapsed)
        .Add("trackTitle", Mended(track.metadata.title))
        .End();
    outer.End();
}
