// Requests and their replies, without a socket.

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "JsonRpc/Batch.h"
#include "tests/JsonRpc/TestMethods.h"

namespace {

class DispatchTest : public testing::Test {
  protected:
    std::string Reply(const std::string& request) {
        kServerThread.Assert();
        const std::string reply = m_server.Execute(request);
        EXPECT_EQ(reply.find('\n'), reply.size() - 1);
        return reply.substr(0, reply.size() - 1);
    }

    std::string BatchReply(const std::string& text) {
        kServerThread.Assert();
        Json::Rpc::Batch batch(text);
        while (!batch.IsWhole()) {
            batch.AnswerNext(m_server, false);
        }
        return batch.TakeReply();
    }

    Json::Rpc::Server m_server;
    TestMethods m_methods{m_server};
};

std::string Error(int code, const char* message, const std::string& id) {
    return "{\"error\":{\"code\":" + std::to_string(code) + ",\"message\":\"" + message + "\"},\"id\":" + id +
           ",\"jsonrpc\":\"2.0\"}";
}
std::string Result(const std::string& id, const std::string& result) {
    return "{\"id\":" + id + ",\"jsonrpc\":\"2.0\",\"result\":" + result + "}";
}
std::string Request(const std::string& rest) {
    return "{\"jsonrpc\":\"2.0\"," + rest + "}";
}

const std::string kInvalidRequest = Error(-32600, "Invalid JSON-RPC request.", "null");
const std::string kInternalError = Error(-32603, "Internal error.", "1");

TEST_F(DispatchTest, EveryRequestGetsItsReply) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> groups{
        {kInvalidRequest, {"5", "\"text\"", "null", "{}", "[]"}},
        {Error(-32600, "Invalid JSON-RPC request.", "1"),
         {R"({"method":"echo","id":1})", R"({"jsonrpc":"1.0","method":"echo","id":1})",
          R"({"jsonrpc":2.0,"method":"echo","id":1})", Request(R"("id":1)"),
          Request(R"("method":5,"id":1)")}},
        {Error(-32601, "Method not found.", "1"),
         {Request(R"("method":"Echo","id":1)"), Request(R"("method":"echo\u0000","id":1)"),
          Request(R"("method":"","id":1)")}},
        {Error(-32602, "Invalid params.", "1"),
         {Request(R"("method":"fill","id":1,"params":{"size":"x"})"),
          Request(R"("method":"fill","id":1,"params":{"size":1e400})"),
          Request(R"("method":"text","id":1,"params":[])"),
          Request(R"("method":"fill","id":1,"params":[1])")}},
        {kInternalError,
         {Request(R"("method":"refuse","id":1)"), Request(R"("method":"throw","id":1)"),
          Request(R"("method":"text","id":1,"params":"refuse")")}},
        // a reply is compact and sorted; characters beyond ASCII are escaped
        {Result("7", R"({"a":[0.10000000000000001,null,{}],"b":"caf\u00e9 \ud83c\udfb5\n"})"),
         {Request("\"method\":\"echo\",\"id\":7,\"params\":"
                  "{\"b\":\"caf\xc3\xa9 \xf0\x9f\x8e\xb5\\n\", \"a\":[0.1, null, {}]}")}},
        {Result("null", "null"), {Request(R"("method":"echo")")}},
        // a text of the method's own
        {Result("1", "[1, \"\xc3\xa9\"]"),
         {Request("\"method\":\"text\",\"id\":1,\"params\":\"[1, \\\"\xc3\xa9\\\"]\"")}},
        {R"({"id":1,"jsonrpc":"2.0"})", {Request(R"("method":"text","id":1,"params":"")")}},
    };
    for (const auto& [reply, requests] : groups) {
        for (const std::string& request : requests) {
            EXPECT_EQ(Reply(request), reply) << request;
        }
    }
}

TEST_F(DispatchTest, IdsComeBackAsTheyWereSentInRepliesOfEveryKind) {
    const std::pair<std::string, std::string> ids[] = {
        {R"([ 1,{"a" :[null]}])", R"([1,{"a":[null]}])"}, {"{}", "{}"}, {"", "null"}};
    std::vector<std::pair<std::string, std::string>> all(std::begin(ids), std::end(ids));
    for (const std::string scalar :
         {"0", "-0", "1.10", "1E2", "123456789012345678901234567890", "1e400", "-1e-400", "\"\"",
          R"("\u00e9\n\/\ud800 \udc00\ud801")", "\"caf\xc3\xa9 \xff\"", "true", "null"}) {
        all.emplace_back(scalar, scalar);
    }
    for (const auto& [id, echoed] : all) {
        const auto request = [&id = id](const std::string& rest) {
            return "{ \"x\":\"\\\"id\\\":5\", \"id\":3, " + rest + ",\"jsonrpc\":\"2.0\"" +
                   (id.empty() ? ", \"id\": null" : ", \"id\": " + id) + " }";
        };
        EXPECT_EQ(Reply(request(R"("method":"echo")")), Result(echoed, "null"));
        EXPECT_EQ(Reply(request(R"("method":"text","params":"[]")")), Result(echoed, "[]"));
        const std::tuple<int, const char*, const char*> failures[] = {
            {-32600, "Invalid JSON-RPC request.", R"("method":{})"},
            {-32603, "Internal error.", R"("method":"throw")"}};
        for (const auto& [code, message, rest] : failures) {
            EXPECT_EQ(Reply(request(rest)), Error(code, message, echoed));
        }
    }
}

TEST_F(DispatchTest, WhatTheReaderCannotTakeSpoilsNoRequest) {
    const std::string params = R"([-1e400,)" + std::string(400, '9') +
                               R"(,1e-400,"\ud834\udd1e","\ud800","\udd1e\ud834","\ud800\u0041\\ud800",1.5])";
    EXPECT_EQ(
        Reply(Request(R"("method":"echo","id":1,"params":)" + params)),
        Result("1", R"([-1e+308,1e+308,0.0,"\ud834\udd1e","\ufffd","\ufffd\ufffd","\ufffdA\\ud800",1.5])"));
}

TEST_F(DispatchTest, BatchAnswersEachMemberInItsPlace) {
    const std::pair<std::string, std::string> members[] = {
        {Request(R"("method":"echo","id":"a]","params":["x\"],",{}])"), Result("\"a]\"", R"(["x\"],",{}])")},
        {"1", kInvalidRequest},
        {"\"echo\"", kInvalidRequest},
        {"{}", kInvalidRequest},
        {"[" + Request(R"("method":"echo","id":1)") + "]", kInvalidRequest},  // no batch within a batch
        {Request(R"("method":["echo"],"id":2)"), Error(-32600, "Invalid JSON-RPC request.", "2")},
        {Request(R"("method":"throw","id":1)"), kInternalError},
        {Request(R"("method":"echo","id":1.10)"), Result("1.10", "null")},
    };
    std::string batch;
    std::string replies;
    for (const auto& [request, reply] : members) {
        batch += ", " + request + " \n";
        replies += "," + reply;
        EXPECT_EQ(BatchReply("[" + request + "]"), "[" + reply + "]\n") << "alone";
    }
    m_methods.calls = 0;
    EXPECT_EQ(BatchReply("[" + batch.substr(1) + "]"), "[" + replies.substr(1) + "]\n");
    EXPECT_EQ(m_methods.calls, 3);
}

}  // namespace
