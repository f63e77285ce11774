// Comparing texts without regard to case. ASCII letters only, whatever the locale: device texts are UTF-8,
// and a byte above 0x7F is part of a character here and never one itself.
#pragma once

#include <string>
#include <string_view>

constexpr char LowerCaseAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// A text to look for in many others. One thread at a time.
class CaselessPattern {
  public:
    explicit CaselessPattern(std::string_view pattern);
    /// The empty pattern is part of every text.
    bool IsPartOf(std::string_view text);

  private:
    std::string m_pattern;
    std::string m_lowered;  ///< kept between texts for its memory
};
