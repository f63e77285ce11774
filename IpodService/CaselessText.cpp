#include "IpodService/CaselessText.h"

#include <algorithm>

namespace {

// Lowering first and searching then is what lets the search run over whole words of memory.
void Lower(std::string_view text, std::string& into) {
    into.resize(text.size());
    std::transform(text.begin(), text.end(), into.begin(), LowerCaseAscii);
}

}  // namespace

CaselessPattern::CaselessPattern(std::string_view pattern) {
    Lower(pattern, m_pattern);
}

bool CaselessPattern::IsPartOf(std::string_view text) {
    if (text.size() < m_pattern.size()) {
        return false;
    }
    Lower(text, m_lowered);
    return m_lowered.find(m_pattern) != std::string::npos;
}
