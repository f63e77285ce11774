#include "IpodService/IpodManager.h"

#include <sys/stat.h>

#include <cerrno>

#include "IpodService/GstreamerStreamer.h"
#include "IpodService/IpodManagerRegistry.h"

namespace {

// Browsing before the first session finds a stack that is not empty and resets the device first.
constexpr std::size_t kInitialNullLevels = 10;

bool IsFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

IpodManager::IpodManager(IIpodNotifications* notifications, DeviceFolders folders)
    : m_notifications(notifications), m_folders(std::move(folders)), m_browseStack(kInitialNullLevels) {
    pthread_mutex_init(&m_browseMutex, nullptr);
    PrepareDatabaseFolder();
    IpodManagerRegistry::Add(this);
}

IpodManager::~IpodManager() {
    IpodManagerRegistry::Remove(this);
    StopStream();
    pthread_mutex_destroy(&m_browseMutex);
    EmptyBrowseStack();
}

void IpodManager::PrepareDatabaseFolder() const {
    const char* path = m_folders.database.c_str();
    if (IsFolder(m_folders.database)) {
        LOG_INFO("Folder ready %s\n", path);
        return;
    }
    if (mkdir(path, 0775) != 0) {
        LOG_ERROR("Could not create the folder %s (%d)\n", path, errno);
    }
}
