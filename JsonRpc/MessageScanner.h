// Cuts a client's byte stream into JSON texts.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "JsonRpc/JsonGrammar.h"
#include "JsonRpc/Limits.h"

namespace Json::Rpc {

struct FramedText {
    enum class Kind {
        Request,    ///< a JSON object
        Batch,      ///< a JSON array
        Malformed,  ///< begins with a bracket and is no JSON, too deep, or unfinished at the stream's end
        Rubbish,    ///< a line, or the rest of one, outside brackets; told of at its first byte
        Http,       ///< the stream begins like an HTTP request; nothing more is to be taken from it
        TooLarge,   ///< beyond the longest request or the most values; nothing more is to be taken
    };
    Kind kind;
    std::string_view text = {};  ///< of a request or a batch; valid until the scanner is used again
    std::size_t members = 0;     ///< of a batch: how many elements it has
};

/// Finds the same texts wherever the segments of the stream happen to end, and whether or not lines separate
/// them. Between texts whitespace, NUL and byte-order marks are skipped. One thread at a time.
class MessageScanner {
  public:
    /// The limits must outlive the scanner.
    explicit MessageScanner(const Limits& limits)
        : m_limits(limits), m_grammar(limits.nesting, limits.requestValues) {}

    /// Adds what has arrived. Next is to be called until it returns nothing before more is added.
    void Append(std::string_view bytes);

    /// Says that nothing more will arrive.
    void End() { m_ended = true; }

    /// The next text, or nothing when more bytes are needed.
    std::optional<FramedText> Next();

    /// Lets go of what has been taken. True when that is all, and Next would find nothing.
    bool ReleaseTaken();

    /// True after Next has found the beginning of a text and not its end.
    bool IsInsideText() const { return m_isInside; }

    /// What the scanner holds on to, in bytes; of what has been taken until it is let go. A text that is
    /// refused anyway is not kept.
    std::size_t HeldBytes() const { return m_buffer.size(); }

  private:
    std::optional<FramedText> FindText();
    std::optional<FramedText> FollowText();
    FramedText Take(FramedText::Kind kind);
    void BeginText();
    bool IsSkipped(char c);
    bool EndsHttpMethod(char c);
    void ReleaseConsumed();

    const Limits& m_limits;
    JsonGrammar m_grammar;
    std::string m_buffer;
    std::size_t m_start = 0;   // first byte of the present text that is kept
    std::size_t m_at = 0;      // next byte to look at
    std::size_t m_length = 0;  // of the present text so far
    bool m_isInside = false;
    bool m_isRubbish = false;  // outside brackets, in a line that has been told of
    bool m_ended = false;
    std::size_t m_markBytes = 0;    // of a byte-order mark so far
    std::size_t m_wordLetters = 0;  // at the stream's beginning, of what may be an HTTP method
    bool m_isFirstWord = true;
};

}  // namespace Json::Rpc
