#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "JsonRpc/Limits.h"
#include "JsonRpc/MessageScanner.h"
#include "tests/JsonRpc/TestMethods.h"

namespace {

class DispatchTest : public testing::Test {
  protected:
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

    Json::Rpc::Server m_server;
    TestMethods m_methods{m_server};
};

std::string Error(int code, const char* message, const char* id) {
    return "{\"error\":{\"code\":" + std::to_string(code) + ",\"message\":\"" + message + "\"},\"id\":" + id +
           ",\"jsonrpc\":\"2.0\"}";
}
std::string Result(const std::string& id, const std::string& result) {
    return "{\"id\":" + id + ",\"jsonrpc\":\"2.0\",\"result\":" + result + "}";
}
std::string Request(const std::string& rest) {
    return "{\"jsonrpc\":\"2.0\"," + rest + "}";
}
std::string Nested(std::size_t depth, const std::string& inside = "") {
    return std::string(depth, '[') + inside + std::string(depth, ']');
}

const std::string kParseError = Error(-32700, "Parse error.", "null");
const std::string kInvalidRequest = Error(-32600, "Invalid JSON-RPC request.", "null");
const std::string kInternalError = Error(-32603, "Internal error.", "1");

TEST_F(DispatchTest, EveryTextGetsItsReply) {
    std::string tooMany = "[1";
    for (unsigned i = 0; i < Json::Rpc::Limits::kBatchRequests; ++i) {
        tooMany += ",1";
    }
    const std::vector<std::pair<std::string, std::vector<std::string>>> groups{
        {kParseError,
         {"5,6", "5 x", "\"a\"]", "rubbish", "[}", "{'a':1}", "{\"a\":1,}", "/**/{}", "{/**/}", "[NaN]",
          std::string("{\"a\":\0}", 7), "{\"a\":\"x\n", "{\"a\":", Nested(65)}},
        {kInvalidRequest, {"5", "\"text\"", "null", "{}", "[]", tooMany + "]"}},
        {Error(-32600, "Invalid JSON-RPC request.", "[1]"),
         {R"({"method":"echo","id":[1]})", R"({"jsonrpc":"1.0","method":"echo","id":[1]})",
          R"({"jsonrpc":2.0,"method":"echo","id":[1]})", Request(R"("id":[1])"),
          Request(R"("method":5,"id":[1])")}},
        {Error(-32601, "Method not found.", "1"),
         {Request(R"("method":"Echo","id":1)"), Request(R"("method":"echo\u0000","id":1)"),
          Request(R"("method":"","id":1)")}},
        {Error(-32602, "Invalid params.", "1"),
         {Request(R"("method":"fill","id":1,"params":{"size":"x"})"),
          Request(R"("method":"fill","id":1,"params":[1])")}},
        {kInternalError, {Request(R"("method":"refuse","id":1)"), Request(R"("method":"throw","id":1)")}},
        // ids come back as they are, and a reply is one line of compact, sorted ASCII
        {Result("7", R"({"a":[0.10000000000000001,null,{}],"b":"caf\u00e9 \ud83c\udfb5\n"})"),
         {Request("\"method\":\"echo\",\"id\":7,\"params\":"
                  "{\"b\":\"caf\xc3\xa9 \xf0\x9f\x8e\xb5\\n\", \"a\":[0.1, null, {}]}")}},
        {Result(R"({"k":[true,-1.5]})", "null"), {Request(R"("method":"echo","id":{"k":[true,-1.5]})")}},
        {Result("null", "null"), {Request(R"("method":"echo")")}},
        {Result(Nested(63, "1"), "null"), {Request("\"method\":\"echo\",\"id\":" + Nested(63, "1"))}},
        {"[" + kInternalError + "," + Result("null", "null") + "," + kInvalidRequest + "]",
         {"[" + Request(R"("method":"throw","id":1)") + "," + Request(R"("method":"echo")") + ",[]]"}},
    };
    for (const auto& [reply, texts] : groups) {
        for (const std::string& text : texts) {
            EXPECT_EQ(Answers(text), reply + "\n") << text.substr(0, 200);
        }
    }
}

TEST_F(DispatchTest, IdsOfEveryTypeComeBackInRepliesOfEveryKind) {
    const auto request = [](const std::string& rest, const std::string& id) {
        return Request(rest + (id.empty() ? "" : ",\"id\":" + id));
    };
    for (const std::string id :
         {"0", "-1", "1.5", "9223372036854775807", "18446744073709551615", "\"\"", R"("\u00e9\n\"")", "true",
          "false", "null", "[]", "{}", R"([1,{"a":[null]}])", R"({"id":{"id":2}})", ""}) {
        const std::string echoed = id.empty() ? "null" : id;
        EXPECT_EQ(Answers(request(R"("method":"echo")", id)), Result(echoed, "null") + "\n");
        const std::tuple<int, const char*, const char*> failures[] = {
            {-32600, "Invalid JSON-RPC request.", R"("method":{})"},
            {-32601, "Method not found.", R"("method":"nothing")"},
            {-32602, "Invalid params.", R"("method":"fill","params":{"size":[]})"},
            {-32603, "Internal error.", R"("method":"throw")"}};
        for (const auto& [code, message, rest] : failures) {
            EXPECT_EQ(Answers(request(rest, id)), Error(code, message, echoed.c_str()) + "\n");
        }
    }
}

TEST_F(DispatchTest, BatchAnswersEachMemberInItsPlace) {
    const std::pair<std::string, std::string> members[] = {
        {Request(R"("method":"echo","id":"a","params":[7])"), Result("\"a\"", "[7]")},
        {Request(R"("method":"echo","params":{"x":1})"), Result("null", R"({"x":1})")},
        {"1", kInvalidRequest},
        {"null", kInvalidRequest},
        {"\"echo\"", kInvalidRequest},
        {"{}", kInvalidRequest},
        {"[" + Request(R"("method":"echo","id":1)") + "]", kInvalidRequest},  // no batch within a batch
        {Request(R"("method":"nothing")"), Error(-32601, "Method not found.", "null")},
        {Request(R"("method":["echo"],"id":2)"), Error(-32600, "Invalid JSON-RPC request.", "2")},
        {Request(R"("method":"fill","params":"x")"), Error(-32602, "Invalid params.", "null")},
        {Request(R"("method":"refuse","id":1)"), kInternalError},
        {Request(R"("method":"echo","id":"last")"), Result("\"last\"", "null")},
    };
    std::string batch;
    std::string replies;
    for (const auto& [request, reply] : members) {
        batch += "," + request;
        replies += "," + reply;
        EXPECT_EQ(Answers("[" + request + "]"), "[" + reply + "]\n") << "alone";
    }
    m_methods.m_calls = 0;
    EXPECT_EQ(Answers("[" + batch.substr(1) + "]"), "[" + replies.substr(1) + "]\n");
    EXPECT_EQ(m_methods.m_calls, 5);

    m_methods.m_calls = 0;
    std::string most = Request(R"("method":"echo")");
    for (unsigned i = 1; i < Json::Rpc::Limits::kBatchRequests; ++i) {
        most += "," + Request(R"("method":"echo")");
    }
    Answers("[" + most + "]");
    EXPECT_EQ(m_methods.m_calls, static_cast<int>(Json::Rpc::Limits::kBatchRequests));
    EXPECT_EQ(Answers("[" + most + ",1]"), kInvalidRequest + "\n");
    EXPECT_EQ(Answers("[" + batch.substr(1) + ",]"), kParseError + "\n");
    EXPECT_EQ(m_methods.m_calls, static_cast<int>(Json::Rpc::Limits::kBatchRequests)) << "none of those";
}

TEST_F(DispatchTest, BatchStopsExecutingWhenItsRepliesFillTheLimit) {
    constexpr std::size_t kFill = 3000000;
    constexpr int kExecuted = 1 + static_cast<int>(Json::Rpc::Limits::kBatchReplyBytes / kFill);
    std::string batch;
    std::string replies;
    for (int i = 0; i < 20; ++i) {
        batch += "," + Request(R"("method":"fill","id":1,"params":{"size":3000000})");
        replies += "," + (i < kExecuted ? Result("1", '"' + std::string(kFill, 'f') + '"') : kInternalError);
    }
    EXPECT_TRUE(Answers("[" + batch.substr(1) + "]") == "[" + replies.substr(1) + "]\n");
    EXPECT_EQ(m_methods.m_calls, kExecuted);
}

}  // namespace
