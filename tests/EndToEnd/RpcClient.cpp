#include "tests/EndToEnd/RpcClient.h"

#include <memory>
#include <stdexcept>

namespace EndToEnd {

namespace {

bool IsNotification(const Json::Value& value) {
    return value.isObject() && value.isMember("method");
}

}  // namespace

Json::Value ParseJson(const std::string& text) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value value;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors))
        throw std::runtime_error("not JSON: " + text.substr(0, 200) + ": " + errors);
    return value;
}

std::string ToLine(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

std::string Request(const std::string& method, const Json::Value& id, const Json::Value& params) {
    Json::Value request;
    request["jsonrpc"] = "2.0";
    request["method"] = method;
    request["id"] = id;
    if (!params.isNull())
        request["params"] = params;
    return ToLine(request);
}

Json::Value RpcClient::Call(const std::string& method, const Json::Value& params) {
    const int id = ++m_lastId;
    Json::Value reply = Exchange(Request(method, id, params));
    if (reply["id"] != id)
        throw std::runtime_error("reply to another request: " + ToLine(reply));
    return reply;
}

Json::Value RpcClient::Exchange(std::string_view text) {
    m_socket.Send(text);
    for (;;) {
        Json::Value value = NextMessage(kPatience);
        if (!IsNotification(value))
            return value;
    }
}

std::string RpcClient::Notification(const std::string& method, const Predicate& pleases,
                                    milliseconds patience) {
    const Clock::time_point deadline = In(patience);
    for (;;) {
        while (m_nextAsked < m_history.size()) {
            const std::string& line = m_history[m_nextAsked++];
            const Json::Value value = ParseJson(line);
            if (value["method"] == method && pleases(value["params"]))
                return line;
        }
        if (Clock::now() >= deadline)
            throw Timeout("timed out waiting for " + method);
        NextMessage(patience);
    }
}

Json::Value RpcClient::NextMessage(milliseconds patience) {
    std::optional<std::string> line = m_socket.ReadLine(patience);
    if (!line)
        throw std::runtime_error("the service has hung up");
    Json::Value value = ParseJson(*line);
    if (IsNotification(value))
        m_history.push_back(std::move(*line));
    return value;
}

}  // namespace EndToEnd
