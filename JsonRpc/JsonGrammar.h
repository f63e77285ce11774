// JSON's grammar, one byte after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Json::Rpc {

/// Follows one text that begins with a bracket, up to the byte with which it ends. Of a text that is no JSON
/// it goes on to follow strings and brackets: what stands inside must not pass for a text of its own. One
/// thread at a time.
class JsonGrammar {
  public:
    enum class Step {
        Goes,
        Closes,       ///< this byte balances the first bracket
        CannotClose,  ///< a bracket of the wrong kind, or a line's end inside a string: whatever follows, the
                      ///< brackets will not balance
        TooMany,      ///< this byte begins one value more than allowed
    };

    /// Deepest nesting, and most values.
    JsonGrammar(std::size_t nesting, std::size_t values) : m_nesting(nesting), m_mostValues(values) {}

    /// Forgets the text.
    void Restart();

    /// Looks at `bytes` from `at` on, up to the one that its answer is about: `at` is behind that then, and
    /// at the end while the text goes on.
    Step Follow(std::string_view bytes, std::size_t& at);

    /// True once the text cannot be JSON, or is nested deeper than allowed.
    bool IsBroken() const { return m_isBroken; }

    /// How many values stand directly inside the outermost bracket.
    std::size_t Members() const { return m_members; }

  private:
    enum class State : std::uint8_t {
        Value,
        FirstElement,
        FirstKey,
        Key,
        Colon,
        AfterValue,
        String,
        Escape,
        HexDigits,
        Literal,
        Minus,
        Zero,
        Integer,
        Point,
        Fraction,
        Exponent,
        ExponentSign,
        ExponentDigits,
    };

    Step Look(char c);
    Step FollowBroken(char c);
    void Open(char c);
    Step Close(char c);
    bool Accepts(char c, Step& step);
    bool AcceptsBetween(char c, Step& step);
    bool BeginsValue(char c, Step& step);
    bool GoIntoValue(char c);
    bool AcceptsInString(char c);
    bool AcceptsInEscape(char c);
    bool AcceptsInNumber(char c, Step& step);
    bool Go(State state);

    std::size_t m_nesting;
    std::size_t m_mostValues;
    std::vector<bool> m_isObject;  // for each open bracket
    std::size_t m_values = 0;      // begun so far, the outermost included
    std::size_t m_members = 0;
    const char* m_literalRest = "";
    State m_state = State::Value;
    std::uint8_t m_hexDigitsLeft = 0;
    bool m_isKey = false;
    bool m_isBroken = false;

    // Of a broken text
    bool m_isInString = false;
    bool m_isEscaped = false;
};

}  // namespace Json::Rpc
