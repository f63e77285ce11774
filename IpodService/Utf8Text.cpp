#include "IpodService/Utf8Text.h"

#include <glib.h>

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// A lead byte's character: its length, and the range of its second byte, which is what shuts out overlong
/// forms, surrogates and what lies beyond U+10FFFF. Length 0: no character begins with that byte.
struct Shape {
    std::size_t length;
    unsigned char secondMin = 0x80;
    unsigned char secondMax = 0xBF;
};

Shape ShapeOf(unsigned char lead) {
    if (lead < 0x80) {
        return {1};
    }
    if (lead < 0xC2) {
        return {0};
    }
    if (lead < 0xE0) {
        return {2};
    }
    if (lead < 0xF0) {
        if (lead == 0xE0) {
            return {3, 0xA0, 0xBF};
        }
        return lead == 0xED ? Shape{3, 0x80, 0x9F} : Shape{3};
    }
    if (lead == 0xF0) {
        return {4, 0x90, 0xBF};
    }
    if (lead == 0xF4) {
        return {4, 0x80, 0x8F};
    }
    return {lead < 0xF4 ? std::size_t{4} : std::size_t{0}};
}

struct Character {
    std::size_t wanted = 0;   ///< 0 when none can begin here
    std::size_t present = 0;  ///< bytes of it that are there and fit
};

/// The character at the front of `text`, which is not empty.
Character FirstCharacter(std::string_view text) {
    const Shape shape = ShapeOf(static_cast<unsigned char>(text[0]));
    Character character{shape.length, shape.length > 0 ? std::size_t{1} : std::size_t{0}};
    for (; character.present < character.wanted && character.present < text.size(); ++character.present) {
        const auto byte = static_cast<unsigned char>(text[character.present]);
        const bool second = character.present == 1;
        if (byte < (second ? shape.secondMin : 0x80) || byte > (second ? shape.secondMax : 0xBF)) {
            break;
        }
    }
    return character;
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
    if (text.empty()) {
        return false;
    }
    const Character character = FirstCharacter(text);
    return character.wanted > character.present && character.present == text.size();
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
