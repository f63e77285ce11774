// The made-up music of the built-in library. All names are invented.
#pragma once

#include <span>
#include <string_view>

namespace DeviceSimulator {

struct BuiltInAlbum {
    std::string_view artist;  ///< empty for a compilation, whose titles are "artist/title"
    std::string_view album;
    std::string_view genre;     ///< empty: none
    std::string_view composer;  ///< empty: none
    std::string_view titles;    ///< in track order, '|' between them
    unsigned discs = 1;         ///< of about equal length
};

std::span<const BuiltInAlbum> BuiltInAlbums();

}  // namespace DeviceSimulator
