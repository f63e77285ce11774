#include "DeviceSimulator/music/LibraryText.h"

#include <glib.h>
#include <strings.h>

#include <algorithm>
#include <cstring>

#include "ServiceUtil/Utf8.h"

namespace DeviceSimulator {

namespace {

struct GFree {
    void operator()(char* text) const { g_free(text); }
};
using GText = std::unique_ptr<char, GFree>;

constexpr std::string_view kArticle = "The ";
constexpr std::size_t kChunkBytes = 65536;

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

std::string CleanName(std::string_view bytes) {
    if (bytes.empty()) {
        return {};  // GLib makes null of null
    }
    // Twice the limit is enough to look at: it only grows from here.
    bytes = bytes.substr(0, 2 * kMaxNameBytes);
    const GText valid(g_utf8_make_valid(bytes.data(), static_cast<gssize>(bytes.size())));
    std::string name(valid.get());
    for (char& c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            c = ' ';
        }
    }
    const std::size_t first = name.find_first_not_of(' ');
    if (first == std::string::npos) {
        return {};
    }
    name.erase(0, first);
    name.resize(CutUtf8(name, kMaxNameBytes).size());
    name.erase(name.find_last_not_of(' ') + 1);
    return name;
}

std::string SortKey(std::string_view name, Sorting sorting) {
    if (sorting == Sorting::Bytes) {
        return std::string(name);
    }
    if (sorting == Sorting::WithoutArticle && name.size() > kArticle.size() &&
        strncasecmp(name.data(), kArticle.data(), kArticle.size()) == 0) {
        name.remove_prefix(kArticle.size());
    }
    if (name.empty()) {
        return {};
    }
    // The initial byte once more in front: folding may change it, and would tear a letter's group apart.
    std::string key(1, g_ascii_tolower(name.front()));
    if (IsAscii(name)) {
        std::transform(name.begin(), name.end(), std::back_inserter(key), g_ascii_tolower);
    } else {
        key += GText(g_utf8_casefold(name.data(), static_cast<gssize>(name.size()))).get();
    }
    return key;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

std::string_view TextPool::Keep(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    if (text.size() > m_left) {
        m_left = std::max(kChunkBytes, text.size());
        m_next = m_chunks.emplace_back(std::make_unique_for_overwrite<char[]>(m_left)).get();
    }
    char* const kept = m_next;
    std::memcpy(kept, text.data(), text.size());
    m_next += text.size();
    m_left -= text.size();
    return {kept, text.size()};
}

}  // namespace DeviceSimulator
