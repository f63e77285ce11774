#include "IpodService/DatabasePath.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr const char* kBuildFolder = "./root/iap2db/";
constexpr std::size_t kLongestPath = 255;

}  // namespace

bool HasDatabaseExtension(std::string_view deviceName) {
    return deviceName.ends_with(kDatabaseExtension);
}

std::string DatabasePath(std::string_view deviceName) {
    std::string name(deviceName);
    if (!HasDatabaseExtension(deviceName)) {
        name += kDatabaseExtension;
    }
    std::replace(name.begin(), name.end(), '/', '_');
    return (kBuildFolder + name).substr(0, kLongestPath);
}
