// JSON objects written as text: what is sent often or is large needs no tree of values.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <string>
#include <string_view>

namespace Json::Rpc {

/// Appends one object, member by member, to a text that outlives it. Names are plain ASCII; clients know them
/// in the order of the alphabet. One thread at a time.
class ObjectText {
  public:
    explicit ObjectText(std::string& text) : m_text(text) { m_text += '{'; }

    ObjectText& Add(std::string_view name, std::integral auto value) {
        if constexpr (std::same_as<decltype(value), bool>) {
            return AddText(name, value ? "true" : "false");
        } else {
            std::array<char, 24> digits;
            const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
            return AddText(name, {digits.data(), end});
        }
    }
    /// A string, which should be well-formed UTF-8 without NUL; characters outside ASCII become \uXXXX.
    ObjectText& Add(std::string_view name, const std::string& value);
    /// The value is JSON text.
    ObjectText& AddText(std::string_view name, std::string_view value) {
        Begin(name).append(value);
        return *this;
    }

    /// The text, for a value that the caller appends to it.
    std::string& Begin(std::string_view name) {
        if (m_text.back() != '{') {
            m_text += ',';
        }
        return m_text.append(1, '"').append(name).append("\":");
    }

    void End() { m_text += '}'; }

  private:
    std::string& m_text;
};

}  // namespace Json::Rpc
