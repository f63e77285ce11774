#include "IpodService/LogText.h"

#include <algorithm>

LogText::LogText(std::string_view text) {
    char* safe = m_short.data();
    if (text.size() >= m_short.size()) {
        m_long.resize(text.size());
        safe = m_long.data();
    }
    *std::transform(text.begin(), text.end(), safe, [](char byte) {
        return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F ? '?' : byte;
    }) = '\0';
}
