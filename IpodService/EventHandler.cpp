#include "IpodService/EventHandler.h"

#include "IpodService/AudioStream.h"
#include "IpodService/Clock.h"
#include "IpodService/DeviceEventLog.h"
#include "IpodService/IIpodNotifications.h"
#include "IpodService/PendingWork.h"
#include "ServiceUtil/ListenerList.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr u32 kPlayContextDelayMs = 1000;
constexpr u32 kBuildingPercent = 99;  ///< above it the database is complete

// Never destroyed: exit() may run destructors while an event is being handled.
ListenerList<EventHandler>& Handlers() {
    static auto& handlers = *new ListenerList<EventHandler>;
    return handlers;
}

bool IsSomebodys(u32 processHandle) {
    bool isSomebodys = false;
    Handlers().ForEach([&](EventHandler& handler) {
        isSomebodys = isSomebodys || handler.Handles().Process() == processHandle;
    });
    return isSomebodys;
}

void Deliver(EventHandler& handler, const DeviceEvent& event, u32 processHandle, bool isSomebodys) {
    DeviceHandles& handles = handler.Handles();
    if (isSomebodys ? handles.Process() != processHandle : !handles.Claim(processHandle)) {
        LOG_WARN("non-matching ipod manager found!\n");
        return;
    }
    try {
        handler.OnDeviceManagerEvent(event);
    } catch (...) {
        // Out of memory, at worst: the event is lost, the other handlers still get theirs.
    }
}

}  // namespace

void DeviceManagerCallback(const DeviceEvent* event, u32 processHandle) {
    if (event == nullptr) {
        return;
    }
    try {
        const bool isSomebodys = IsSomebodys(processHandle);
        Handlers().ForEach(
            [&](EventHandler& handler) { Deliver(handler, *event, processHandle, isSomebodys); });
    } catch (...) {
        // The caller is C code: nothing may pass.
    }
}

EventHandler::EventHandler(PendingWork& pending, DeviceHandles& handles, std::atomic<ConnectionState>& state,
                           AudioStream& stream, IIpodNotifications& notifications)
    : m_pending(pending),
      m_handles(handles),
      m_connectionState(state),
      m_streamer(stream),
      m_notifications(notifications) {
    Handlers().Add(this);
}

EventHandler::~EventHandler() {
    Handlers().Remove(this);
}

void EventHandler::OnDeviceManagerEvent(const DeviceEvent& record) {
    const DeviceEventView event(record);
    DeviceEventLog::Write(event, m_handles.Process());
    switch (event.Id()) {
        case DEV_MGR_EVENT_DEVICE_MANAGER_EXITED:
            m_pending.RequestExit();
            break;
        case DEV_MGR_EVENT_DEVICE_DISCONNECTED:
            if (IsOpenDeviceGone(event)) {
                m_pending.RequestClose();
            }
            break;
        case DEV_MGR_EVENT_PLAY_TIME:
            if (m_handles.IsDeviceOpen()) {
                m_notifications.OnTrackTime(event.Word(1));
            }
            break;
        case DEV_MGR_EVENT_PLAY_STARTED:
            m_notifications.OnTrackPaused(false);
            break;
        case DEV_MGR_EVENT_PLAY_PAUSED:
            m_notifications.OnTrackPaused(true);
            break;
        case DEV_MGR_EVENT_PLAY_TRACK_CHANGED:
            RequestTrackInfo();
            break;
        case DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING:
            FollowPlayContext();
            break;
        case DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE:
            m_streamer.Restart(event.Signed(1));
            break;
        case DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO:
            if (event.Word(1) > kBuildingPercent) {
                m_connectionState = ConnectionState::DatabaseComplete;
                m_pending.Wake();
            }
            break;
        default:
            break;
    }
}

void EventHandler::RequestTrackInfo() {
    if (m_handles.IsDeviceOpen()) {
        m_pending.RequestPlayStatus();
    }
}

// The device may not be done with its new list: its state is asked for at once and again a while later.
void EventHandler::FollowPlayContext() {
    RequestTrackInfo();
    if (m_handles.IsDeviceOpen()) {
        m_pending.RequestPlayStatusAt(NowMs() + kPlayContextDelayMs);
    }
}

bool EventHandler::IsOpenDeviceGone(const DeviceEventView& event) const {
    const u32 type = event.Word(1);
    return type != DEV_MGR_DEVICE_TYPE_HUB && type != DEV_MGR_DEVICE_TYPE_UNKNOWN &&
           event.Word(2) == m_handles.Device();
}
