// Drives what a connection does with a client's bytes: the first byte of the input chooses the size of the
// segments in which the rest arrives. Every text must get exactly one line of valid JSON as its reply, and
// the same one however the stream was split, unless the stream holds bytes between its texts, which are cut
// where a segment ends.

#include <json/reader.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "JsonRpc/Limits.h"
#include "JsonRpc/MessageScanner.h"
#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/Server.h"

namespace {

using Json::Rpc::FramedText;

class Methods {
  public:
    bool Echo(const Json::Value& request, Json::Value& response) {
        response["jsonrpc"] = "2.0";
        response["id"] = request["id"];
        response["result"] = request["params"];
        return true;
    }
    bool Convert(const Json::Value& request, Json::Value& response) {
        response["id"] = request["id"];
        response["result"]["number"] = request["params"]["number"].asInt();
        response["result"]["flag"] = request["params"]["flag"].asBool();
        response["result"]["text"] = request["params"]["text"].asString();
        return true;
    }
    bool Refuse(const Json::Value&, Json::Value&) { return false; }
    bool Throw(const Json::Value&, Json::Value&) { throw std::runtime_error("broken"); }
};

class Fixture {
  public:
    Fixture() {
        Add(&Methods::Echo, "echo");
        Add(&Methods::Convert, "convert");
        Add(&Methods::Refuse, "refuse");
        Add(&Methods::Throw, "throw");
        reader.reset(Json::CharReaderBuilder().newCharReader());
    }

    Json::Rpc::Server server;
    std::unique_ptr<Json::CharReader> reader;

  private:
    void Add(bool (Methods::*member)(const Json::Value&, Json::Value&), const char* name) {
        server.AddMethod(std::make_unique<Json::Rpc::RpcMethod<Methods>>(m_methods, member, name));
    }
    Methods m_methods;
};

struct Conversation {
    std::string replies;
    bool hasRubbish = false;
};

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void CheckReply(Fixture& fixture, const std::string& reply) {
    Require(!reply.empty() && reply.find('\n') == reply.size() - 1);
    Require(
        std::all_of(reply.begin(), reply.end(), [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }));
    Json::Value value;
    Require(fixture.reader->parse(reply.data(), reply.data() + reply.size(), &value, nullptr));
    Require(value.isObject() || value.isArray());
}

void AnswerAll(Fixture& fixture, Json::Rpc::MessageScanner& scanner, Conversation& conversation) {
    while (const auto text = scanner.Next()) {
        Require(text->text.size() <= Json::Rpc::Limits::kRequestBytes ||
                text->kind == FramedText::Kind::Rubbish);
        const std::string reply = fixture.server.Answer(*text);
        CheckReply(fixture, reply);
        conversation.replies += reply;
        conversation.hasRubbish = conversation.hasRubbish || text->kind == FramedText::Kind::Rubbish;
    }
}

Conversation Converse(Fixture& fixture, std::string_view stream, std::size_t segment) {
    Conversation conversation;
    Json::Rpc::MessageScanner scanner;
    for (; !stream.empty(); stream.remove_prefix(std::min(segment, stream.size()))) {
        scanner.Append(stream.substr(0, segment));
        AnswerAll(fixture, scanner, conversation);
    }
    scanner.End();
    AnswerAll(fixture, scanner, conversation);
    return conversation;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Fixture fixture;
    if (size < 2) {
        return 0;
    }
    const std::string_view stream(reinterpret_cast<const char*>(data) + 1, size - 1);
    const Conversation split = Converse(fixture, stream, std::size_t{1} + data[0]);
    const Conversation whole = Converse(fixture, stream, stream.size());
    if (!split.hasRubbish && !whole.hasRubbish) {
        Require(split.replies == whole.replies);
    }
    return 0;
}
