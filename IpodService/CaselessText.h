// Looking for a text in names without regard to case, in all scripts.
#pragma once

#include <string>
#include <string_view>

#include "IpodService/CaseFolding.h"

/// A text to look for in many names. What Unicode folds to the same is the same: a final sigma and any other,
/// a sharp s and "ss"; no locale changes it. A letter with an accent of its own and one with a combining
/// accent stay two things, since that is spelling and not case, and normalising every name takes longer than
/// all the rest. One thread at a time.
class CaselessPattern {
  public:
    explicit CaselessPattern(std::string_view pattern);
    /// The empty pattern is part of every name. Where one of the two is not well-formed UTF-8, both are
    /// compared byte by byte, with only ASCII letters regardless of case. A character that is cut off at a
    /// name's end does not count against the name: that is what a record's size does to a long one.
    bool IsPartOf(std::string_view name);

  private:
    CaseFolding m_folding;
    bool m_wellFormed;      ///< the pattern
    std::string m_bytes;    ///< the pattern, ASCII letters in lower case
    std::string m_folded;   ///< the same as m_bytes where the pattern is not well-formed
    std::string m_lowered;  ///< of a name; kept between names for its memory
};
