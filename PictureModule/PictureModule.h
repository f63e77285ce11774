// What the service and the module that shrinks pictures agree about: C functions in a table, so that the
// image library behind them is loaded when there is a picture for it, and not at the service's start.
#pragma once

#include <cstddef>
#include <cstdint>

/// To be raised with every change of what is declared here.
inline constexpr std::uint32_t kPictureModuleVersion = 1;

/// A JPEG whose header has been read.
struct OpenPicture;

/// In pixels.
struct PictureSize {
    int width = 0;
    int height = 0;
    bool operator==(const PictureSize&) const = default;
};

/// How many of a picture's pixels become one: a box of so many.
struct BoxSize {
    int across = 1;
    int down = 1;
};

struct PictureFailure {
    char reason[256] = "";  ///< ends with a NUL, may have several lines
};

/// Not owned by whoever reads them.
struct PictureBytes {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

/// No exception comes out of these. One thread at a time.
struct PictureModule {
    std::uint32_t version = kPictureModuleVersion;

    /// Null, with the reason, for what is no JPEG. `scale` is what the decoder divides by as it decodes,
    /// rounding up: 1, 2, 4 or 8. `size` is what is left then. The bytes must not change before `close`,
    /// which the caller owes for each picture that was opened.
    OpenPicture* (*open)(PictureBytes jpeg, int scale, PictureSize* size, PictureFailure* why);

    /// A JPEG of `pixels`, each the average of a box, from the upper left corner on; all boxes lie within the
    /// picture, and have sides of 1 to 2895. Once for each picture. The bytes are there until `close`; none
    /// when the picture cannot be decoded or encoded to its end. Of one that is cut off or damaged what could
    /// be read is taken.
    PictureBytes (*shrink)(OpenPicture* picture, PictureSize pixels, BoxSize box);

    void (*close)(OpenPicture* picture);
};

/// The name under which a module has its PictureModule.
inline constexpr const char* kPictureModuleSymbol = "kIpodPictureModule";
extern "C" __attribute__((visibility("default"))) const PictureModule kIpodPictureModule;
