#include "DeviceSimulator/device/Artwork.h"

#include <algorithm>

namespace DeviceSimulator {

DevMgrResult DeliverPicture(const Picture* picture, std::span<std::uint8_t> block, PictureSize& size) {
    if (picture == nullptr) {
        return DEV_MGR_IAP_ARTWORK_NOT_PRESENT_ERROR;
    }
    if (picture->bytes.size() > block.size()) {
        return DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY;
    }
    const std::uint64_t length = std::uint64_t{picture->width} * picture->height * 2;
    const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(length, block.size()));
    const auto end = std::copy(picture->bytes.begin(), picture->bytes.end(), block.begin());
    const auto written = picture->bytes.size();
    if (room > written) {
        std::fill_n(end, room - written, std::uint8_t{0});
    }
    size = PictureSize{picture->width, picture->height};
    return DEV_MGR_SUCCESS;
}

}  // namespace DeviceSimulator
