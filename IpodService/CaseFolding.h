// Unicode's case folding, for many texts.
#pragma once

#include <array>
#include <memory>
#include <string_view>
#include <vector>

/// Folds as GLib does, and remembers what it has asked GLib: a call for each of 100,000 names takes too long.
/// One thread at a time.
class CaseFolding {
  public:
    /// `text`, which is well-formed UTF-8 and may hold NULs, folded. Valid until the next call.
    std::string_view Fold(std::string_view text);

  private:
    /// A character folded: up to three, which take 6 bytes at most.
    struct Folded {
        std::array<char, 7> bytes;
        unsigned char length;
    };
    /// The characters that differ in the last byte only, by that byte's low bits.
    using Block = std::array<Folded, 64>;

    static std::unique_ptr<const Block> FoldBlock(std::string_view character);
    const Block& BlockOf(std::string_view character);

    std::vector<std::unique_ptr<const Block>> m_blocks;  ///< by code point / 64; null: not asked yet
    std::vector<char> m_result;                          ///< with room for all that a text can become
};
