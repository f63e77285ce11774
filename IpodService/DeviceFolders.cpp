#include "IpodService/DeviceFolders.h"

#include <sys/stat.h>

#include <cerrno>
#include <vector>

#include "IpodService/DatabasePath.h"
#include "IpodService/FileCleanup.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr std::string_view kPlaylistExtension = ".pls";

bool IsFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void Clear(const std::string& folder, std::string_view text, const char* announcement) {
    const std::vector<std::string> files = ListFiles(folder, text);
    if (!files.empty()) {
        LOG_DEBUG("%s", announcement);
        RemoveFiles(folder, files);
    }
}

}  // namespace

void PrepareDatabaseFolder(const DeviceFolders& folders) {
    const char* const path = folders.database.c_str();
    if (IsFolder(folders.database)) {
        LOG_INFO("Folder ready %s\n", path);
    } else if (mkdir(path, 0775) != 0) {
        LOG_ERROR("Could not create the folder %s (%d)\n", path, errno);
    }
}

void ClearDeviceFiles(const DeviceFolders& folders) {
    Clear(folders.playlists, kPlaylistExtension, "iPod - Clearing playlist files! \n");
    Clear(folders.database, kDatabaseExtension, "iPod - Clearing database files! \n");
}
