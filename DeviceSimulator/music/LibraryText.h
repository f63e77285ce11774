// Names as a player keeps and sorts them.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "DeviceSimulator/music/MusicChoice.h"

namespace DeviceSimulator {

/// No screen shows more of a name, and no record holds it.
constexpr std::size_t kMaxNameBytes = 1024;

/// `bytes` as a name: well-formed UTF-8 (what is not becomes U+FFFD), control characters as blanks, no blanks
/// around it, at most kMaxNameBytes.
std::string CleanName(std::string_view bytes);

/// Names compare as bytes of their keys. Unless by bytes, case does not count, and the names that share the
/// initial byte which a letter jump goes by stand together, whatever their script; non-Latin ones come last.
/// `name` is well-formed UTF-8.
std::string SortKey(std::string_view name, Sorting sorting = Sorting::WithoutArticle);

/// What of `text` stands between the separators, in its order; at least one part.
std::vector<std::string_view> Split(std::string_view text, char separator);

/// Texts that stay where they are for as long as the pool (or the one it was moved to) lives.
class TextPool {
  public:
    std::string_view Keep(std::string_view text);

  private:
    std::vector<std::unique_ptr<char[]>> m_chunks;
    char* m_next = nullptr;
    std::size_t m_left = 0;
};

}  // namespace DeviceSimulator
