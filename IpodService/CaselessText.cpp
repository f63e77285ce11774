#include "IpodService/CaselessText.h"

#include "IpodService/AsciiCase.h"
#include "ServiceUtil/Utf8.h"

CaselessPattern::CaselessPattern(std::string_view pattern)
    : m_wellFormed(WellFormedLength(pattern) == pattern.size()) {
    LowerAscii(pattern, m_bytes);
    m_folded = m_wellFormed ? m_folding.Fold(pattern) : m_bytes;
}

bool CaselessPattern::IsPartOf(std::string_view name) {
    if (LowerAscii(name, m_lowered)) {
        // Lower case is all that folding does to ASCII. A pattern beyond ASCII may well fold to it.
        return m_lowered.find(m_folded) != std::string::npos;
    }
    const std::size_t wellFormed = WellFormedLength(name);
    const bool foldable = wellFormed == name.size() || IsCutCharacter(name.substr(wellFormed));
    if (!m_wellFormed || !foldable) {
        return m_lowered.find(m_bytes) != std::string::npos;
    }
    return m_folding.Fold(name.substr(0, wellFormed)).find(m_folded) != std::string_view::npos;
}
