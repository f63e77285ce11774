// Texts of fixed length, as the device manager's records hold them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

/// A text in a record: up to its NUL, or the whole field when a device wrote none. Refers to the record.
class RecordText {
  public:
    template <std::size_t size>
    explicit RecordText(const char (&field)[size]) : m_text(field, strnlen(field, size)) {}

    /// For "%.*s".
    int Length() const { return static_cast<int>(m_text.size()); }
    const char* Data() const { return m_text.data(); }
    std::string String() const { return std::string(m_text); }
    std::string_view View() const { return m_text; }

  private:
    std::string_view m_text;
};

/// Appends what fits of `text`, which ends up NUL-terminated; the rest is cut off.
template <std::size_t size>
void AppendText(std::string_view text, std::array<char, size>& buffer) {
    const std::size_t length = strnlen(buffer.data(), size - 1);
    const std::size_t fitting = std::min(text.size(), size - 1 - length);
    std::memcpy(buffer.data() + length, text.data(), fitting);
    buffer[length + fitting] = '\0';
}

template <std::size_t size>
void CopyText(std::string_view text, std::array<char, size>& buffer) {
    buffer[0] = '\0';
    AppendText(text, buffer);
}
