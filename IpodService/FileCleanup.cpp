#include "IpodService/FileCleanup.h"

#include <dirent.h>

#include <array>
#include <cstdio>
#include <memory>

#include "IpodService/AsciiCase.h"

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

}  // namespace

std::vector<std::string> ListFiles(const std::string& folder, std::string_view text) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, CloseFolder> open(opendir(folder.c_str()));
    if (open == nullptr) {
        return names;
    }
    AsciiCaselessPattern pattern(text);
    while (const dirent* entry = readdir(open.get())) {
        if (entry->d_type == DT_REG && pattern.IsPartOf(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

void RemoveFiles(const std::string& folder, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        std::array<char, 256> path{};
        const int length = std::snprintf(path.data(), path.size(), "%s/%s", folder.c_str(), name.c_str());
        // A path that was cut off could be another file's.
        if (length > 0 && static_cast<std::size_t>(length) < path.size()) {
            std::remove(path.data());
        }
    }
}
