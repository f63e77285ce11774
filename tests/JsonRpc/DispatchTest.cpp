#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <string>
#include <utility>
#include <vector>

#include "JsonRpc/Limits.h"
#include "JsonRpc/MessageScanner.h"
#include "JsonRpc/Text.h"
#include "tests/JsonRpc/TestMethods.h"

namespace {

class DispatchTest : public testing::Test {
  protected:
    DispatchTest() { m_methods.AddTo(m_server); }

    /// The replies to a stream that arrives at once and then ends.
    std::string Answers(const std::string& stream) {
        Json::Rpc::MessageScanner scanner;
        scanner.Append(stream);
        scanner.End();
        std::string replies;
        while (const auto text = scanner.Next()) {
            replies += m_server.Answer(*text);
        }
        return replies;
    }

    TestMethods m_methods;
    Json::Rpc::Server m_server;
};

std::string Error(int code, const char* message, const std::string& id) {
    return "{\"error\":{\"code\":" + std::to_string(code) + ",\"message\":\"" + message + "\"},\"id\":" + id +
           ",\"jsonrpc\":\"2.0\"}";
}
std::string ParseError() {
    return Error(-32700, "Parse error.", "null");
}
std::string InvalidRequest(const std::string& id = "null") {
    return Error(-32600, "Invalid JSON-RPC request.", id);
}
std::string NotFound(const std::string& id) {
    return Error(-32601, "Method not found.", id);
}
std::string InvalidParams(const std::string& id) {
    return Error(-32602, "Invalid params.", id);
}
std::string InternalError(const std::string& id) {
    return Error(-32603, "Internal error.", id);
}
std::string Result(const std::string& id, const std::string& result) {
    return "{\"id\":" + id + ",\"jsonrpc\":\"2.0\",\"result\":" + result + "}";
}
std::string Request(const std::string& rest) {
    return "{\"jsonrpc\":\"2.0\"," + rest + "}";
}

TEST_F(DispatchTest, EveryTextGetsItsReply) {
    const std::string tooMany = [] {
        std::string batch = "[1";
        for (unsigned i = 0; i < Json::Rpc::Limits::kBatchRequests; ++i) {
            batch += ",1";
        }
        return batch + "]";
    }();
    const std::vector<std::pair<std::string, std::string>> cases{
        // ids come back as they are, whatever their type; a missing one as null
        {Request(R"("method":"echo","id":7,"params":{"b":[1],"a":"x"})"),
         Result("7", R"({"a":"x","b":[1]})")},
        {Request(R"("method":"echo","id":"\u00e9\n")"), Result(R"("\u00e9\n")", "null")},
        {Request(R"("method":"echo","id":{"k":[null,true,-1.5]})"),
         Result(R"({"k":[null,true,-1.5]})", "null")},
        {Request(R"("method":"echo")"), Result("null", "null")},
        // requests that are none
        {R"({"method":"echo","id":1})", InvalidRequest("1")},
        {R"({"jsonrpc":"1.0","method":"echo","id":1})", InvalidRequest("1")},
        {R"({"jsonrpc":2.0,"method":"echo","id":1})", InvalidRequest("1")},
        {Request(R"("id":[2])"), InvalidRequest("[2]")},
        {Request(R"("method":5,"id":3)"), InvalidRequest("3")},
        {"{}", InvalidRequest()},
        {Request(R"("method":"Echo","id":1)"), NotFound("1")},
        {Request(R"("method":"echo\u0000","id":1)"), NotFound("1")},
        {Request(R"("method":"","id":1)"), NotFound("1")},
        // how methods fail
        {Request(R"("method":"number","id":1,"params":{"value":"x"})"), InvalidParams("1")},
        {Request(R"("method":"number","id":1,"params":[1])"), InvalidParams("1")},
        {Request(R"("method":"number","id":1,"params":{"value":5})"), Result("1", "5")},
        {Request(R"("method":"refuse","id":1)"), InternalError("1")},
        {Request(R"("method":"throw","id":1)"), InternalError("1")},
        // batches
        {"[]", InvalidRequest()},
        {"[1,{}]", "[" + InvalidRequest() + "," + InvalidRequest() + "]"},
        {"[" + Request(R"("method":"throw","id":1)") + "," + Request(R"("method":"echo")") + ",[]]",
         "[" + InternalError("1") + "," + Result("null", "null") + "," + InvalidRequest() + "]"},
        {tooMany, InvalidRequest()},
        // no JSON at all, or not quite
        {"5", InvalidRequest()},
        {"\"text\"", InvalidRequest()},
        {"null", InvalidRequest()},
        {"5,6", ParseError()},
        {"5 x", ParseError()},
        {"\"a\"]", ParseError()},
        {"rubbish", ParseError()},
        {"[}", ParseError()},
        {"{'a':1}", ParseError()},
        {"{\"a\":1,}", ParseError()},
        {"/**/{}", ParseError()},
        {"{/**/}", ParseError()},
        {"[NaN]", ParseError()},
        {std::string("{\"a\":\0}", 7), ParseError()},
        {"{\"a\":\"x\n", ParseError()},
        {"{\"a\":", ParseError()},
        {std::string(65, '[') + std::string(65, ']'), ParseError()},
        {Request("\"method\":\"echo\",\"id\":" + std::string(63, '[') + "1" + std::string(63, ']')),
         Result(std::string(63, '[') + "1" + std::string(63, ']'), "null")},
    };
    for (const auto& [text, reply] : cases) {
        EXPECT_EQ(Answers(text), reply + "\n") << text.substr(0, 200);
    }
}

TEST_F(DispatchTest, BatchStopsExecutingWhenItsRepliesFillTheLimit) {
    const std::string fill = Request(R"("method":"fill","id":1,"params":{"size":3000000})");
    std::string batch = "[" + fill;
    for (int i = 1; i < 20; ++i) {
        batch += "," + fill;
    }
    const std::string replies = Answers(batch + "]");
    EXPECT_LT(replies.size(), Json::Rpc::Limits::kBatchReplyBytes + 4000000);
    EXPECT_EQ(m_methods.m_calls, 6);
    Json::Value parsed;
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    ASSERT_TRUE(reader->parse(replies.data(), replies.data() + replies.size(), &parsed, nullptr));
    EXPECT_EQ(parsed.size(), 20U);
    EXPECT_EQ(parsed[19]["error"]["code"].asInt(), -32603);
    EXPECT_EQ(parsed[19]["id"].asInt(), 1);
}

TEST(Text, IsOneLineOfCompactSortedAsciiJson) {
    Json::Value value;
    value["b"] = "caf\xc3\xa9 \xf0\x9f\x8e\xb5\n\"";
    value["a"]["list"].append(Json::Value());
    value["a"]["real"] = 0.1;
    value["a"]["none"] = Json::Value(Json::arrayValue);
    EXPECT_EQ(Json::Rpc::ToText(value), R"({"a":{"list":[null],"none":[],"real":0.10000000000000001},)"
                                        R"("b":"caf\u00e9 \ud83c\udfb5\n\""})"
                                        "\n");
}

}  // namespace
