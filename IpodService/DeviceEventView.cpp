#include "IpodService/DeviceEventView.h"

#include <cstring>

namespace {

constexpr u32 kTextSize = sizeof(DeviceEvent::text);

}  // namespace

std::string_view DeviceEventView::TextAt(u32 offset) const {
    if (offset >= kTextSize) {
        return {};
    }
    const char* text = m_event.text + offset;
    return {text, strnlen(text, kTextSize - offset)};
}

u32 DeviceEventView::OffsetAfter(u32 offset) const {
    if (offset >= kTextSize) {
        return kTextSize;
    }
    return offset + static_cast<u32>(TextAt(offset).size()) + 1;
}

std::string_view DeviceEventView::TextAfter(u32 offset) const {
    return TextAt(OffsetAfter(offset));
}

std::string_view DeviceEventView::Text(unsigned number) const {
    u32 offset = 0;
    for (; number > 0; --number) {
        offset = OffsetAfter(offset);
    }
    return TextAt(offset);
}

unsigned char DeviceEventView::Byte(std::size_t offset) const {
    return offset < kTextSize ? static_cast<unsigned char>(m_event.text[offset])
                              : static_cast<unsigned char>(0);
}

int DeviceEventView::BigEndian16(std::size_t offset) const {
    return Byte(offset) * 256 + Byte(offset + 1);
}
