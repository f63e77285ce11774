// The texts that a server answers with: each one line of JSON, ended by "\n".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Json::Rpc {

/// The errors of the protocol itself. The values are the codes on the wire.
enum class ErrorCode {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
    InternalError = -32603,
};

/// The id is JSON text and stands in the reply as it is. Any thread.
std::string ErrorReply(ErrorCode code, std::string_view id = "null");

/// A reply that is written where it stands: the method appends the JSON text of "result". One thread at a
/// time.
class ResultReply {
  public:
    /// The id is JSON text and stands in the reply as it is.
    explicit ResultReply(std::string_view id);

    std::string& Result() { return m_text; }

    /// The whole reply; without the member "result" when nothing has been appended. Once.
    std::string Take();

  private:
    std::string m_text;
    std::size_t m_end = 0;    // of what stands before the member "result"
    std::size_t m_begin = 0;  // of its value
};

}  // namespace Json::Rpc
