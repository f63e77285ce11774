// Comparing bytes without regard to the case of ASCII letters, whatever the locale. For what is no text in a
// language: file names, keys.
#pragma once

#include <string>
#include <string_view>

constexpr char LowerCaseAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// `into` becomes `text` in lower case. True when there is no byte above 0x7F in it. Any thread.
bool LowerAscii(std::string_view text, std::string& into);

/// Bytes to look for in many others. One thread at a time.
class AsciiCaselessPattern {
  public:
    explicit AsciiCaselessPattern(std::string_view pattern);
    /// The empty pattern is part of every text.
    bool IsPartOf(std::string_view text);

  private:
    std::string m_pattern;
    std::string m_lowered;  ///< kept between texts for its memory
};
