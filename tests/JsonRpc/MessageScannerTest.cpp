#include "JsonRpc/MessageScanner.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "JsonRpc/Limits.h"

namespace {

using Json::Rpc::MessageScanner;
using Kind = Json::Rpc::FramedText::Kind;
using Texts = std::vector<std::pair<Kind, std::string>>;

Texts Scan(std::string_view stream, std::size_t segment) {
    MessageScanner scanner;
    Texts texts;
    for (bool hasMore = true; hasMore; stream.remove_prefix(std::min(segment, stream.size()))) {
        hasMore = !stream.empty();
        hasMore ? scanner.Append(stream.substr(0, segment)) : scanner.End();
        while (const auto text = scanner.Next()) {
            texts.emplace_back(text->kind, text->text);
        }
    }
    return texts;
}

std::string Nested(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

TEST(MessageScanner, TextsAreTheSameHoweverTheStreamIsSplit) {
    const std::vector<std::pair<std::string, Texts>> cases{
        {" \r\n\t{}[] \n{\n\"a\":[1,{}]\n}\n \n ",
         {{Kind::Complete, "{}"}, {Kind::Complete, "[]"}, {Kind::Complete, "{\n\"a\":[1,{}]\n}"}}},
        {R"({"a":"}]\"{\\"}{"b":"\\\""})",
         {{Kind::Complete, R"({"a":"}]\"{\\"})"}, {Kind::Complete, R"({"b":"\\\""})"}}},
        {"{\"a\":\"lost}\n{\"b\":1}", {{Kind::Malformed, "{\"a\":\"lost}\n"}, {Kind::Complete, "{\"b\":1}"}}},
        {"[\"\\\n[]", {{Kind::Malformed, "[\"\\\n"}, {Kind::Complete, "[]"}}},
        {"{\"a\":", {{Kind::Malformed, "{\"a\":"}}},
        {"[}", {{Kind::Complete, "[}"}}},
        {Nested(64), {{Kind::Complete, Nested(64)}}},
        {Nested(65) + "{}", {{Kind::Malformed, Nested(65)}, {Kind::Complete, "{}"}}},
        {std::string("[\0]", 3), {{Kind::Complete, std::string("[\0]", 3)}}},
    };
    for (const auto& [stream, expected] : cases) {
        for (std::size_t segment = 1; segment <= stream.size(); ++segment) {
            EXPECT_EQ(Scan(stream, segment), expected) << stream << " in segments of " << segment;
        }
    }
}

TEST(MessageScanner, RubbishEndsWithItsLineOrWithWhatHasArrived) {
    EXPECT_EQ(Scan("GET / HTTP/1.1\r\n{}", 100),
              (Texts{{Kind::Rubbish, "GET / HTTP/1.1\r"}, {Kind::Complete, "{}"}}));
    EXPECT_EQ(Scan("abc{}", 2), (Texts{{Kind::Rubbish, "ab"}, {Kind::Rubbish, "c{"}, {Kind::Rubbish, "}"}}));
}

TEST(MessageScanner, LongestRequestPassesAndOneByteMoreEndsTheStream) {
    const std::size_t limit = Json::Rpc::Limits::kRequestBytes;
    const std::string longest = "[\"" + std::string(limit - 4, 'x') + "\"]";
    for (const std::size_t segment : {std::size_t{1000}, limit - 1, limit, 3 * limit}) {
        EXPECT_EQ(Scan(longest + "[]", segment), (Texts{{Kind::Complete, longest}, {Kind::Complete, "[]"}}));
        EXPECT_EQ(Scan("{}" + longest.substr(0, limit - 1) + " ][]", segment),
                  (Texts{{Kind::Complete, "{}"}, {Kind::TooLong, ""}}));
        EXPECT_EQ(Scan(std::string(limit + 1, '['), segment), (Texts{{Kind::TooLong, ""}}));
        EXPECT_EQ(Scan(std::string(2 * limit, ' ') + "{}", segment), (Texts{{Kind::Complete, "{}"}}));
    }
}

}  // namespace
