// What the JSON reader cannot take although it is JSON.
#pragma once

#include <string>

namespace Json::Rpc {

/// Makes a text that is good JSON one that jsoncpp reads, of the same length: a number beyond the range of
/// double becomes 1e308 with its sign, an escaped surrogate without its partner the replacement character
/// \ufffd. Any thread.
void MakeReadable(std::string& text);

}  // namespace Json::Rpc
