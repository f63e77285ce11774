#include "ServiceUtil/Utf8.h"

#include <glib.h>

#include <algorithm>
#include <array>

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr char32_t kReplacementCharacter = 0xFFFD;
constexpr std::size_t kLongestCharacter = 4;

/// Bytes of the character that is well-formed at the front of `text`, which is not empty; 0 when none is.
std::size_t CharacterLength(std::string_view text) {
    if (text.front() == '\0') {
        return 1;
    }
    const gchar* end = text.data();
    const auto longest = static_cast<gssize>(std::min(text.size(), kLongestCharacter));
    g_utf8_validate(text.data(), longest, &end);
    return end == text.data() ? 0 : static_cast<std::size_t>(g_utf8_next_char(text.data()) - text.data());
}

}  // namespace

std::size_t WellFormedLength(std::string_view text) {
    const gchar* const end = text.data() + text.size();
    const gchar* at = text.data();
    // GLib takes a NUL for the end; it is a character like others here.
    while (!g_utf8_validate(at, end - at, &at) && *at == '\0') {
        ++at;
    }
    return static_cast<std::size_t>(at - text.data());
}

bool IsCutCharacter(std::string_view text) {
    if (text.empty() || text.size() >= kLongestCharacter) {
        return false;
    }
    // What begins a character becomes one with the lowest or the highest bytes behind it.
    const std::array fillings{"\x80\x80\x80", "\xBF\xBF\xBF"};
    return std::any_of(fillings.begin(), fillings.end(), [text](const char* filling) {
        return CharacterLength(std::string(text) + filling) > text.size();
    });
}

std::string WellFormedUtf8(std::string_view text, std::size_t recordSize) {
    const bool fillsRecord = text.size() + 1 >= recordSize;
    std::string mended;
    while (true) {
        const std::size_t wellFormed = WellFormedLength(text);
        mended += text.substr(0, wellFormed);
        text.remove_prefix(wellFormed);
        if (text.empty()) {
            return mended;
        }
        if (fillsRecord && IsCutCharacter(text)) {
            return mended;
        }
        mended += kReplacement;
        text.remove_prefix(1);
    }
}

char32_t TakeCharacter(std::string_view& text) {
    const std::size_t length = CharacterLength(text);
    const char32_t character = length == 0 ? kReplacementCharacter : g_utf8_get_char(text.data());
    text.remove_prefix(std::max<std::size_t>(length, 1));
    return character;
}

void AppendUtf8(std::string& text, char32_t character) {
    std::array<gchar, 6> bytes{};
    const gint length = g_unichar_to_utf8(character, bytes.data());
    text.append(bytes.data(), static_cast<std::size_t>(length));
}

std::string_view CutUtf8(std::string_view text, std::size_t most) {
    std::string_view cut = text.substr(0, most);
    for (std::size_t behind = 1;
         cut.size() < text.size() && behind <= std::min(cut.size(), kLongestCharacter - 1); ++behind) {
        if (IsCutCharacter(cut.substr(cut.size() - behind))) {
            return cut.substr(0, cut.size() - behind);
        }
    }
    return cut;
}
