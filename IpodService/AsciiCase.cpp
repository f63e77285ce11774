#include "IpodService/AsciiCase.h"

// Lowering first and searching then is what lets the search run over whole words of memory.
bool LowerAscii(std::string_view text, std::string& into) {
    into.resize(text.size());
    unsigned char seen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        seen = static_cast<unsigned char>(seen | static_cast<unsigned char>(text[i]));
        into[i] = LowerCaseAscii(text[i]);
    }
    return seen < 0x80;
}

AsciiCaselessPattern::AsciiCaselessPattern(std::string_view pattern) {
    LowerAscii(pattern, m_pattern);
}

bool AsciiCaselessPattern::IsPartOf(std::string_view text) {
    LowerAscii(text, m_lowered);
    return m_lowered.find(m_pattern) != std::string::npos;
}
