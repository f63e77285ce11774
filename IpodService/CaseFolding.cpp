#include "IpodService/CaseFolding.h"

#include <glib.h>

#include <cstring>
#include <string>

#include "IpodService/AsciiCase.h"

namespace {

constexpr unsigned char kContinuation = 0x80;
constexpr unsigned char kContinuationBits = 0x3F;

unsigned char LowBits(char continuation) {
    return static_cast<unsigned char>(continuation) & kContinuationBits;
}

std::size_t LengthOf(unsigned char lead) {
    if (lead < 0xE0) {
        return 2;
    }
    return lead < 0xF0 ? 3 : 4;
}

/// The code point without its last six bits. `character` has two bytes or more.
std::size_t BlockIndex(std::string_view character) {
    const unsigned leadBits = 0x7FU >> character.size();
    std::size_t index = static_cast<unsigned char>(character[0]) & leadBits;
    for (std::size_t i = 1; i + 1 < character.size(); ++i) {
        index = index << 6 | LowBits(character[i]);
    }
    return index;
}

}  // namespace

std::string_view CaseFolding::Fold(std::string_view text) {
    if (m_result.size() < text.size() * sizeof(Folded)) {
        m_result.resize(text.size() * sizeof(Folded));
    }
    char* end = m_result.data();
    for (std::size_t at = 0; at < text.size();) {
        const auto lead = static_cast<unsigned char>(text[at]);
        if (lead < 0x80) {
            *end++ = LowerCaseAscii(text[at++]);
            continue;
        }
        const std::string_view character = text.substr(at, LengthOf(lead));
        const Folded& folded = BlockOf(character)[LowBits(character.back())];
        // Of a fixed length, which takes no call.
        std::memcpy(end, folded.bytes.data(), folded.bytes.size());
        end += folded.length;
        at += character.size();
    }
    return {m_result.data(), static_cast<std::size_t>(end - m_result.data())};
}

std::unique_ptr<const CaseFolding::Block> CaseFolding::FoldBlock(std::string_view character) {
    auto block = std::make_unique<Block>();
    std::string one(character);
    for (std::size_t i = 0; i < block->size(); ++i) {
        one.back() = static_cast<char>(kContinuation | i);
        const std::unique_ptr<gchar, decltype(&g_free)> folded(
            g_utf8_casefold(one.data(), static_cast<gssize>(one.size())), g_free);
        Folded& into = (*block)[i];
        into.length = static_cast<unsigned char>(
            std::string_view(folded.get()).copy(into.bytes.data(), into.bytes.size()));
    }
    return block;
}

const CaseFolding::Block& CaseFolding::BlockOf(std::string_view character) {
    const std::size_t index = BlockIndex(character);
    if (index >= m_blocks.size()) {
        m_blocks.resize(index + 1);
    }
    std::unique_ptr<const Block>& block = m_blocks[index];
    if (block == nullptr) {
        block = FoldBlock(character);
    }
    return *block;
}
