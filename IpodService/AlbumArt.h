// Turns the picture that the device delivered into the one that clients get.
#pragma once

#include <memory>
#include <span>
#include <stdexcept>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/PictureLoader.h"

/// A picture as it lies in the shared-memory block. The bytes are not owned.
struct DeliveredPicture {
    u32 height = 0;             ///< as the device reported it, in pixels
    u32 width = 0;              ///< as the device reported it, in pixels
    u32 length = 0;             ///< bytes that a picture of that size takes; may be more than can be read
    std::span<const u8> bytes;  ///< what of them can be read; empty: there is no picture
};

/// A picture as clients get it.
struct AlbumArt {
    std::span<const u8> bytes;  ///< of `shrunk`, or else as they were delivered
    u32 height = 0;             ///< to report to clients; not the true size of a picture that was shrunk
    u32 width = 0;
    std::unique_ptr<OpenPicture, void (*)(OpenPicture*)> shrunk{nullptr, nullptr};
};

/// Bytes of a picture of the reported size, modulo 2^32. Where one of the two is 0 the other is the length.
u32 AlbumArtLength(u32 height, u32 width);

/// Why a picture cannot be shrunk.
class PictureError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The picture for clients: as it stands up to a reported height of 320, else as a small JPEG that is
/// reported as 100 x 100. The picture's bytes must not change meanwhile. Throws PictureError when the bytes
/// are no JPEG, are one of a size that cannot be shrunk or one that costs too much to decode, as JpegCost
/// has it, and when there is no module to shrink it. One thread at a time.
AlbumArt ConvertAlbumArt(const DeliveredPicture& picture, PictureLoader& loader);

/// The picture's bytes as they stand, with the delivered size.
AlbumArt AsDelivered(const DeliveredPicture& picture);
