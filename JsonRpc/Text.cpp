#include "JsonRpc/Text.h"

#include <json/writer.h>

namespace Json::Rpc {

// The stream writers that are to replace this one differ in details of its text and take twice as long.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
std::string ToText(const Json::Value& value) {
    return Json::FastWriter().write(value);
}
#pragma GCC diagnostic pop

}  // namespace Json::Rpc
