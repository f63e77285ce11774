// Texts of the device on their way into the log.
#pragma once

#include <array>
#include <string>
#include <string_view>

/// A text with '?' for every control byte: a name must not end lines, begin entries or drive a terminal. One
/// that a device's record holds takes no memory of its own.
class LogText {
  public:
    explicit LogText(std::string_view text);

    /// As long as the object lives.
    const char* c_str() const { return m_long.empty() ? m_short.data() : m_long.data(); }

  private:
    std::array<char, 256> m_short;
    std::string m_long;
};
