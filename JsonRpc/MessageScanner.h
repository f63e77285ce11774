#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Json::Rpc {

/// One text cut out of a client's byte stream.
struct FramedText {
    enum class Kind {
        Complete,   ///< begins with a bracket and ends with the one that balances it
        Rubbish,    ///< begins with anything else; ends at a line's end or with what had arrived
        Malformed,  ///< a line end inside a string, a comment, too deep, or unfinished at the stream's end
        TooLong,    ///< beyond the longest request; nothing more will come from this scanner
    };
    Kind kind;
    std::string_view text;  ///< valid until the scanner is used again
};

/// Cuts a byte stream into JSON texts, wherever the segments of the stream happen to end and whether or not
/// lines separate the texts. Knows strings and brackets only: a complete text may still fail to parse. One
/// thread at a time.
class MessageScanner {
  public:
    /// Adds what has arrived. Next is to be called until it returns nothing before more is added.
    void Append(std::string_view bytes);

    /// Says that nothing more will arrive.
    void End() { m_ended = true; }

    /// The next text, or nothing when more bytes are needed.
    std::optional<FramedText> Next();

  private:
    enum class Step { Goes, Completes, Breaks };

    void SkipWhitespace();
    void ReleaseConsumed();
    Step Look(char c);
    Step LookInString(char c);
    FramedText Take(FramedText::Kind kind, std::size_t end);
    FramedText TakeRubbish();
    FramedText RefuseTooLong();

    std::string m_buffer;
    std::size_t m_start = 0;  // first byte of the current text
    std::size_t m_at = 0;     // next byte to look at
    std::size_t m_depth = 0;  // open brackets; 0 between texts
    bool m_inString = false;
    bool m_escaped = false;
    bool m_isBroken = false;  // the current text cannot be JSON, but its end is still to be found
    bool m_ended = false;
    bool m_refused = false;
};

}  // namespace Json::Rpc
