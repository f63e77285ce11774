// Drives what a connection does with a client's bytes: the first byte of the input chooses the size of the
// segments in which the rest arrives. Every text must get exactly one line of valid JSON as its reply, the
// same one however the stream was split, and what passes for JSON must be such for another reader too.

#include <json/reader.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "JsonRpc/Batch.h"
#include "JsonRpc/Limits.h"
#include "JsonRpc/MessageScanner.h"
#include "JsonRpc/ObjectText.h"
#include "JsonRpc/ReaderText.h"
#include "JsonRpc/Reply.h"
#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/Server.h"
#include "JsonRpc/Text.h"

namespace {

using Json::Rpc::FramedText;

class Methods {
  public:
    using Request = Json::Rpc::Request;

    bool Echo(const Request& request, std::string& result) {
        result += Json::Rpc::ToText(request.Params());
        result.pop_back();
        return true;
    }
    bool Convert(const Request& request, std::string& result) {
        const Json::Value& params = request.Params();
        Json::Rpc::ObjectText(result)
            .Add("flag", params["flag"].asBool())
            .Add("number", params["number"].asInt())
            .Add("text", params["text"].asString())
            .End();
        return true;
    }
    bool Refuse(const Request&, std::string&) { return false; }
    bool Throw(const Request&, std::string&) { throw std::runtime_error("broken"); }
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
    void Add(Json::Rpc::RpcMethod<Methods>::Member member, const char* name) {
        server.AddMethod(std::make_unique<Json::Rpc::RpcMethod<Methods>>(m_methods, member, name));
    }
    Methods m_methods;
};

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool IsJson(Fixture& fixture, std::string text) {
    Json::Rpc::MakeReadable(text);
    Json::Value value;
    return fixture.reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
}

void CheckReply(Fixture& fixture, const std::string& reply) {
    Require(!reply.empty() && reply.find('\n') == reply.size() - 1);
    Require(IsJson(fixture, reply));
}

std::string AnswerBatch(Fixture& fixture, const FramedText& text) {
    kServerThread.Assert();
    if (text.members == 0) {
        return Json::Rpc::ErrorReply(Json::Rpc::ErrorCode::InvalidRequest);
    }
    Json::Rpc::Batch batch(text.text);
    std::size_t answered = 0;
    for (; !batch.IsWhole(); ++answered) {
        batch.AnswerNext(fixture.server, answered % 7 == 6);
    }
    Require(answered == text.members);
    return batch.TakeReply();
}

std::string Answer(Fixture& fixture, const FramedText& text) {
    kServerThread.Assert();
    const bool isGood = text.kind == FramedText::Kind::Request || text.kind == FramedText::Kind::Batch;
    Require(!isGood || IsJson(fixture, std::string(text.text)));
    if (text.kind == FramedText::Kind::Batch) {
        return AnswerBatch(fixture, text);
    }
    return isGood ? fixture.server.Execute(text.text)
                  : Json::Rpc::ErrorReply(Json::Rpc::ErrorCode::ParseError);
}

/// False when the stream is to be left.
bool AnswerAll(Fixture& fixture, Json::Rpc::MessageScanner& scanner, std::string& replies) {
    while (const auto text = scanner.Next()) {
        const std::string reply = Answer(fixture, *text);
        CheckReply(fixture, reply);
        replies += reply;
        if (text->kind == FramedText::Kind::TooLarge || text->kind == FramedText::Kind::Http) {
            return false;
        }
    }
    return true;
}

std::string Converse(Fixture& fixture, std::string_view stream, std::size_t segment) {
    static const Json::Rpc::Limits limits;
    std::string replies;
    Json::Rpc::MessageScanner scanner(limits);
    for (; !stream.empty(); stream.remove_prefix(std::min(segment, stream.size()))) {
        scanner.Append(stream.substr(0, segment));
        if (!AnswerAll(fixture, scanner, replies)) {
            return replies;
        }
    }
    scanner.End();
    AnswerAll(fixture, scanner, replies);
    return replies;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Fixture fixture;
    if (size < 2) {
        return 0;
    }
    const std::string_view stream(reinterpret_cast<const char*>(data) + 1, size - 1);
    Require(Converse(fixture, stream, std::size_t{1} + data[0]) == Converse(fixture, stream, stream.size()));
    return 0;
}
