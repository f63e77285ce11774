#include "JsonRpc/MessageScanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using Json::Rpc::MessageScanner;
using Kind = Json::Rpc::FramedText::Kind;
using Texts = std::vector<std::pair<Kind, std::string>>;

const Json::Rpc::Limits kLimits;

/// What is found, and of good texts which.
Texts Scan(std::string_view stream, std::size_t segment) {
    MessageScanner scanner(kLimits);
    Texts texts;
    for (bool hasMore = true; hasMore; stream.remove_prefix(std::min(segment, stream.size()))) {
        hasMore = !stream.empty();
        hasMore ? scanner.Append(stream.substr(0, segment)) : scanner.End();
        while (const auto text = scanner.Next()) {
            const bool isGood = text->kind == Kind::Request || text->kind == Kind::Batch;
            texts.emplace_back(text->kind, isGood ? text->text : "");
            if (text->kind == Kind::TooLarge || text->kind == Kind::Http) {
                return texts;
            }
        }
    }
    return texts;
}

std::string Nested(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

const std::pair<Kind, std::string> kRubbish{Kind::Rubbish, ""};
const std::pair<Kind, std::string> kMalformed{Kind::Malformed, ""};
const std::pair<Kind, std::string> kHttp{Kind::Http, ""};
const std::pair<Kind, std::string> kObject{Kind::Request, "{}"};

TEST(MessageScannerTest, TextsAreTheSameHoweverTheStreamIsSplit) {
    const std::vector<std::pair<std::string, Texts>> cases{
        {" \r\n\t{}[] \n{\n\"a\":[1,{}]\n}\n \n ",
         {kObject, {Kind::Batch, "[]"}, {Kind::Request, "{\n\"a\":[1,{}]\n}"}}},
        {R"({"a":"}]\"{\\"}{"b":"\\\""})",
         {{Kind::Request, R"({"a":"}]\"{\\"})"}, {Kind::Request, R"({"b":"\\\""})"}}},
        // a lost quote costs a line, a bracket of the wrong kind ends the text that it is in
        {"{\"a\":\"lost}\n{}", {kMalformed, kObject}},
        {"[\"\\\n{}", {kMalformed, kObject}},
        {"[ {\"a\":1 ]{}", {kMalformed, kObject}},
        {"[}{}", {kMalformed, kObject}},
        // what is inside a refused text is no text of its own
        {"[1 2,{},[{}]]{}", {kMalformed, kObject}},
        {"{x{}\t[{}]\"{}}\"}{}", {kMalformed, kObject}},
        {"[\"\t{}\"]{}", {kMalformed, kObject}},
        {std::string("[\0{}]{}", 7), {kMalformed, kObject}},
        {"{\"a\":", {kMalformed}},
        {Nested(64), {{Kind::Batch, Nested(64)}}},
        {Nested(65) + "{}", {kMalformed, kObject}},
        {std::string(200, '[').append("{}").append(200, ']').append("{}"), {kMalformed, kObject}},
        // outside brackets: an error a line
        {std::string("\0\xEF\xBB\xBF{}\0", 7), {kObject}},
        {"\xEF\xBB{}\xEF\xBB", {kRubbish, kObject}},
        {"abc \xEF\xBB\xBF{}}{}x\ny\n\n", {kRubbish, kObject, kRubbish, kObject, kRubbish, kRubbish}},
        // HTTP is known by its beginning only
        {" POST /{} HTTP/1.1\r\n\r\n{}", {kRubbish, kHttp}},
        {"GETS\n{}", {kRubbish, kObject}},
        {"Get /{}", {kRubbish, kObject}},
        {"NO {}", {kRubbish, kObject}},
        {"{}GET /{}", {kObject, kRubbish, kObject}},
    };
    for (const auto& [stream, expected] : cases) {
        for (std::size_t segment = 1; segment <= stream.size(); ++segment) {
            EXPECT_EQ(Scan(stream, segment), expected) << stream << " in segments of " << segment;
        }
    }
}

TEST(MessageScannerTest, LargestRequestPassesAndNoLarger) {
    const std::size_t limit = kLimits.requestBytes;
    const std::string longest = "[\"" + std::string(limit - 4, 'x') + "\"]";
    std::string most = "[0";
    for (std::size_t i = 2; i < kLimits.requestValues; ++i) {
        most += ",0";
    }
    for (const std::size_t segment : {std::size_t{1000}, limit - 1, limit, 3 * limit}) {
        EXPECT_EQ(Scan(longest + "{}", segment), (Texts{{Kind::Batch, longest}, kObject}));
        EXPECT_EQ(Scan("{}" + longest.substr(0, limit - 1) + " ]{}", segment),
                  (Texts{kObject, {Kind::TooLarge, ""}}));
        EXPECT_EQ(Scan(std::string(limit + 1, '['), segment), (Texts{{Kind::TooLarge, ""}}));
        EXPECT_EQ(Scan(std::string(2 * limit, ' ').append("{}"), segment), (Texts{kObject}));
        EXPECT_EQ(Scan(most + "]{}", segment), (Texts{{Kind::Batch, most + "]"}, kObject}));
        EXPECT_EQ(Scan(most + ",0]{}", segment), (Texts{{Kind::TooLarge, ""}}));
        EXPECT_EQ(Scan(most + ",]{}", segment), (Texts{kMalformed, kObject})) << "no value too many";
    }
}

TEST(MessageScannerTest, KeepsNothingOfWhatIsTakenOrRefused) {
    MessageScanner scanner(kLimits);
    for (const char* rest : {"", "\n", "\r\n \xEF\xBB\xBF"}) {
        scanner.Append("{\"a\":" + std::to_string(kLimits.requestBytes) + "}" + rest);
        EXPECT_TRUE(scanner.Next().has_value());
        EXPECT_TRUE(scanner.ReleaseTaken());
        EXPECT_EQ(scanner.HeldBytes(), 0U);
    }
    scanner.Append("{} {");
    EXPECT_TRUE(scanner.Next().has_value());
    EXPECT_FALSE(scanner.ReleaseTaken()) << "another one begins";
    EXPECT_FALSE(scanner.Next().has_value());
    scanner.Append("}");
    EXPECT_TRUE(scanner.Next().has_value());
    for (const char* piece : {"[!", "\"xxxxxxxx", "yyyy\"", "{"}) {
        scanner.Append(piece);
        EXPECT_FALSE(scanner.Next());
        EXPECT_TRUE(scanner.IsInsideText());
        EXPECT_EQ(scanner.HeldBytes(), 0U);
    }
    scanner.Append("}]");
    EXPECT_TRUE(scanner.Next().has_value());
    EXPECT_FALSE(scanner.IsInsideText());
}

}  // namespace
