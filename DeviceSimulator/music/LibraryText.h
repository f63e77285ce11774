// Names as a player keeps and sorts them.
#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/coll.h>

#include "DeviceSimulator/music/MusicChoice.h"

namespace DeviceSimulator {

/// No screen shows more of a name, and no record holds it.
constexpr std::size_t kMaxNameBytes = 1024;

/// `bytes` as a name: well-formed UTF-8 (what is not becomes U+FFFD), control characters as blanks, no blanks
/// around it, at most kMaxNameBytes.
std::string CleanName(std::string_view bytes);

/// The order of a list of names. Any thread may ask.
class NameOrder {
  public:
    explicit NameOrder(const Sorting& sorting = {});

    /// Names compare as bytes of their keys. Without a locale, and unless by bytes, the names that share the
    /// initial byte which a letter jump goes by stand together, whatever their script; non-Latin ones come
    /// last. `name` is well-formed UTF-8.
    std::string Key(std::string_view name) const;

  private:
    SortRule m_rule;
    std::shared_ptr<const icu::Collator> m_collator;  // null: without a locale
};

/// What of `text` stands between the separators, in its order; at least one part.
std::vector<std::string_view> Split(std::string_view text, char separator);

/// A text that GLib hands over, freed; empty for null.
std::string TakeGlibText(char* text);

/// Texts that stay where they are for as long as the pool (or the one it was moved to) lives.
class TextPool {
  public:
    std::string_view Keep(std::string_view text) {
        auto* const kept = static_cast<char*>(m_memory->allocate(text.size(), 1));
        return {kept, text.copy(kept, text.size())};
    }

  private:
    std::unique_ptr<std::pmr::monotonic_buffer_resource> m_memory =
        std::make_unique<std::pmr::monotonic_buffer_resource>(65536);
};

}  // namespace DeviceSimulator
