#include "ServiceUtil/Base64.h"

#include <glib.h>

#include <algorithm>

namespace {

bool IsDigit(char c) {
    return g_ascii_isalnum(c) || c == '+' || c == '/';
}

}  // namespace

void AppendBase64(std::string& text, std::span<const std::uint8_t> bytes) {
    const std::size_t begin = text.size();
    text.resize(begin + (bytes.size() + 2) / 3 * 4);
    gint state = 0;
    gint rest = 0;
    gchar* const out = text.data() + begin;
    const std::size_t size = g_base64_encode_step(bytes.data(), bytes.size(), FALSE, out, &state, &rest);
    g_base64_encode_close(FALSE, out + size, &state, &rest);
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    text = text.substr(0, text.find_last_not_of('=') + 1);
    // GLib passes over what it does not know.
    if (!std::all_of(text.begin(), text.end(), IsDigit)) {
        return std::nullopt;
    }
    std::string bytes(text.size() / 4 * 3 + 3, '\0');
    gint state = 0;
    guint rest = 0;
    auto* const out = reinterpret_cast<guchar*>(bytes.data());
    std::size_t size = g_base64_decode_step(text.data(), text.size(), out, &state, &rest);
    constexpr std::string_view kFilling = "==";
    size += g_base64_decode_step(kFilling.data(), (4 - text.size() % 4) % 4 % 3, out + size, &state, &rest);
    bytes.resize(size);
    return bytes;
}
