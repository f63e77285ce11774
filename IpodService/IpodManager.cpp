// The session: registration, the steps of a connection, and the end.

#include "IpodService/IpodManager.h"

#include <algorithm>
#include <cstdint>

#include "IpodService/Clock.h"
#include "IpodService/DeviceManagerNames.h"
#include "IpodService/Outcome.h"

namespace {

using std::chrono::milliseconds;

// Players are looked for at this pace while there is none, and the loop is never asleep for longer.
constexpr milliseconds kLongestSleep{1000};
// The pace of a step that tries something again.
constexpr milliseconds kRetryPause{25};

}  // namespace

IpodManager::IpodManager(IIpodNotifications* notifications, DeviceFolders folders, std::function<void()> wake,
                         std::string pictureModule)
    : m_notifications(notifications),
      m_folders(std::move(folders)),
      m_pending(std::move(wake)),
      m_pictures(std::move(pictureModule)) {
    pthread_mutex_init(&m_browseMutex, nullptr);
    PrepareDatabaseFolder(m_folders);
}

IpodManager::~IpodManager() {
    pthread_mutex_destroy(&m_browseMutex);
}

void IpodManager::UpdateConnection() {
    switch (m_connectionState.load()) {
        case ConnectionState::Unregistered:
            RegisterProcess();
            break;
        case ConnectionState::Registered:
            FindAndOpenDevice();
            SetUpCharging();
            break;
        case ConnectionState::Connected:
            OpenSessionOrRecover("EIMS_Connected");
            break;
        case ConnectionState::DatabaseComplete:
            OpenSessionOrRecover("EIMS_DBComplete");
            break;
        case ConnectionState::BuildingDatabase:
        case ConnectionState::BrowseReady:
            break;
    }
}

milliseconds IpodManager::TimeToNextStep() const {
    if (!IsDeviceConnected()) {
        return kLongestSleep;
    }
    const ConnectionState state = m_connectionState;
    const bool opensSession =
        state == ConnectionState::Connected || state == ConnectionState::DatabaseComplete;
    if (opensSession || m_pending.IsAlbumArtDue()) {
        return kRetryPause;
    }
    return std::min(kLongestSleep, milliseconds(m_pending.TimeToPlayStatus(NowMs).value_or(UINT32_MAX)));
}

i32 IpodManager::RegisterProcess() {
    const u32 code = m_link.Register(DeviceManagerCallback);
    if (code != DEV_MGR_SUCCESS) {
        LOG_INFO("Return from RegisterProcess is :%d, %s\n", static_cast<int>(code), ResultCodeName(code));
        return Outcome(code);
    }
    m_connectionState = ConnectionState::Registered;
    AllocateShm1();
    return Outcome(code);
}

void IpodManager::OpenSessionOrRecover(const char* stateText) {
    LOG_INFO("%s", stateText);
    if (OpenBrowseSession() == 0) {
        return;
    }
    ResetDatabase();
    CloseBrowseSession();
    if (OpenBrowseSession() != 0) {
        CloseDevice();
    }
}

i32 IpodManager::OpenBrowseSession() {
    const i32 outcome = m_browseStack.OpenSession();
    // A library that grants a session without a device would else end the search for one.
    if (outcome == 0 && IsDeviceConnected()) {
        m_connectionState = ConnectionState::BrowseReady;
    }
    return outcome;
}

i32 IpodManager::BrowseTopCategory(u32 category) {
    // The device's path would narrow what is opened here.
    if (!m_browseStack.IsEmpty()) {
        LOG_WARN("error : browsing category while not at top level\n");
        LOG_WARN(" experimental browse reset performed\n");
        if (ResetDatabase() != 0) {
            LOG_WARN(" FORCE browse reset performed\n");
            CloseBrowseSession();
            OpenBrowseSession();
        }
    }
    return m_browseStack.EnterTopCategory(category);
}

void IpodManager::ProcessDelayedStreamRestart() {
    if (m_pending.TakeStreamRestart()) {
        LOG_WARN("performing delayed audio stream restart!\n");
        RestartStream(AudioStream::kElementsChooseRate);
    }
}

i32 IpodManager::Shutdown() {
    FreeShm1();
    FreeShm2();
    const u32 code = m_link.OnProcess(
        DEVICE_CALL(eDevMgrDeRegisterProcess, .failureText = "Return form eDevMgrDeRegisterProcess is "));
    if (code == DEV_MGR_SUCCESS) {
        m_connectionState = ConnectionState::Unregistered;
    }
    return Outcome(code);
}
