// Texts of the device on their way into the log.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

/// A text with '?' for every control byte: a name must not end lines, begin entries or drive a terminal. One
/// that a device's record holds takes no memory of its own.
class LogText {
  public:
    explicit LogText(std::string_view text) {
        char* safe = m_short.data();
        if (text.size() >= m_short.size()) {
            m_long.resize(text.size());
            safe = m_long.data();
        }
        *std::transform(text.begin(), text.end(), safe, [](char byte) {
            return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F ? '?' : byte;
        }) = '\0';
    }

    /// As long as the object lives.
    const char* c_str() const { return m_long.empty() ? m_short.data() : m_long.data(); }

  private:
    std::array<char, 256> m_short;
    std::string m_long;
};
