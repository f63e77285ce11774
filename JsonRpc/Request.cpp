#include "JsonRpc/Request.h"

#include "JsonRpc/JsonSpan.h"
#include "JsonRpc/Text.h"

namespace Json::Rpc {

namespace {

bool IsString(std::string_view value) {
    return value.front() == '"';
}

std::string_view WithoutTrailingSpace(std::string_view value) {
    while (IsWhitespace(value.back())) {
        value.remove_suffix(1);
    }
    return value;
}

/// What a string stands for; escapes are rare, and the reader knows them.
std::string_view Decode(std::string_view string, std::string& storage) {
    if (string.find('\\') == std::string_view::npos) {
        return string.substr(1, string.size() - 2);
    }
    storage = FromText(string).asString();
    return storage;
}

}  // namespace

Request::Request(std::string_view text) {
    if (text.empty() || text.front() != '{') {
        return;
    }
    std::string decoded;
    for (std::size_t at = 1; text[at = SkipSeparators(text, at)] != '}';) {
        const std::size_t nameEnd = EndOfString(text, at);
        const std::string_view name = Decode(text.substr(at, nameEnd - at), decoded);
        at = SkipSeparators(text, nameEnd);
        const std::size_t valueEnd = EndOfValue(text, at);
        Take(name, WithoutTrailingSpace(text.substr(at, valueEnd - at)));
        at = valueEnd;
    }
}

void Request::Take(std::string_view name, std::string_view value) {
    if (name == "id") {
        m_id = value;
        if (value.front() == '[' || value.front() == '{') {  // line ends may stand between its tokens
            m_idText = ToText(FromText(value));
            m_idText.pop_back();
            m_id = m_idText;
        }
    } else if (name == "method") {
        m_method = IsString(value) ? std::optional(Decode(value, m_methodText)) : std::nullopt;
    } else if (name == "jsonrpc") {
        std::string decoded;
        m_isVersion2 = IsString(value) && Decode(value, decoded) == "2.0";
    } else if (name == "params") {
        m_paramsText = value;
    }
}

const Json::Value& Request::Params() const {
    if (!m_params) {
        m_params = m_paramsText.empty() ? Json::Value() : FromText(m_paramsText);
    }
    return *m_params;
}

}  // namespace Json::Rpc
