#include "JsonRpc/ObjectText.h"

#include <json/writer.h>

namespace Json::Rpc {

ObjectText& ObjectText::Add(std::string_view name, const std::string& value) {
    return AddText(name, Json::valueToQuotedString(value.c_str()));
}

}  // namespace Json::Rpc
