#include "DeviceSimulator/music/LibraryText.h"

#include <glib.h>
#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "ServiceUtil/Utf8.h"

namespace DeviceSimulator {

namespace {

constexpr std::string_view kArticle = "The ";

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Null for a locale that nothing is known of.
std::unique_ptr<const icu::Collator> MakeCollator(const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<const icu::Collator> collator(
        icu::Collator::createInstance(icu::Locale(locale.c_str()), status));
    // Who asks for what is not known gets what is nobody's in particular, which has no name.
    const bool isKnown =
        U_SUCCESS(status) && *collator->getLocale(ULOC_VALID_LOCALE, status).getName() != '\0';
    return isKnown ? std::move(collator) : nullptr;
}

std::string CollationKey(const icu::Collator& collator, std::string_view name) {
    const auto text = icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
    std::string key(4 * name.size() + 16, '\0');
    const auto get = [&] {
        return static_cast<std::size_t>(collator.getSortKey(text, reinterpret_cast<std::uint8_t*>(key.data()),
                                                            static_cast<std::int32_t>(key.size())));
    };
    const std::size_t size = get();
    if (size > key.size()) {
        key.resize(size);
        get();
    }
    key.resize(std::max<std::size_t>(size, 1) - 1);  // it ends in a zero
    return key;
}

std::string FoldedKey(std::string_view name) {
    if (name.empty()) {
        return {};
    }
    // The initial byte once more in front: folding may change it, and would tear a letter's group apart.
    std::string key(1, g_ascii_tolower(name.front()));
    if (IsAscii(name)) {
        std::transform(name.begin(), name.end(), std::back_inserter(key), g_ascii_tolower);
    } else {
        key += TakeGlibText(g_utf8_casefold(name.data(), static_cast<gssize>(name.size())));
    }
    return key;
}

}  // namespace

std::string TakeGlibText(char* text) {
    const std::unique_ptr<char, decltype(&g_free)> owned(text, g_free);
    return owned ? owned.get() : std::string();
}

std::string CleanName(std::string_view bytes) {
    if (bytes.empty()) {
        return {};  // GLib makes null of null
    }
    // Twice the limit is enough to look at: it only grows from here.
    bytes = bytes.substr(0, 2 * kMaxNameBytes);
    std::string name = TakeGlibText(g_utf8_make_valid(bytes.data(), static_cast<gssize>(bytes.size())));
    std::replace_if(
        name.begin(), name.end(), [](char c) { return g_ascii_iscntrl(c); }, ' ');
    name.erase(0, name.find_first_not_of(' '));
    name.resize(CutUtf8(name, kMaxNameBytes).size());
    name.erase(name.find_last_not_of(' ') + 1);
    return name;
}

bool IsLocale(const std::string& locale) {
    return MakeCollator(locale) != nullptr;
}

NameOrder::NameOrder(const Sorting& sorting)
    : m_rule(sorting.rule), m_collator(sorting.locale.empty() ? nullptr : MakeCollator(sorting.locale)) {}

std::string NameOrder::Key(std::string_view name) const {
    if (m_rule == SortRule::Bytes) {
        return std::string(name);
    }
    if (m_rule == SortRule::WithoutArticle && name.size() > kArticle.size() &&
        strncasecmp(name.data(), kArticle.data(), kArticle.size()) == 0) {
        name.remove_prefix(kArticle.size());
    }
    return m_collator != nullptr ? CollationKey(*m_collator, name) : FoldedKey(name);
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

}  // namespace DeviceSimulator
