// What events of the device manager change.
#pragma once

#include <atomic>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/ConnectionState.h"
#include "IpodService/DeviceHandles.h"

class AudioStream;
class DeviceEventView;
class IIpodNotifications;
class PendingWork;

/// What the device manager calls with an event. Hands it to the handlers of the process that it is for. The
/// device manager's callback thread.
void DeviceManagerCallback(const DeviceEvent* event, u32 processHandle);

/// Takes events from its construction to its destruction. Runs on the device manager's callback thread and
/// touches what it is given here and nothing else: what is more than a notification or a restart of the audio
/// stream is left to the server thread.
class EventHandler {
  public:
    /// Nothing is owned; all of it outlives the handler.
    EventHandler(PendingWork& pending, DeviceHandles& handles, std::atomic<ConnectionState>& state,
                 AudioStream& stream, IIpodNotifications& notifications);
    /// Returns once no event is being handled any more. Not from inside a device-manager call.
    ~EventHandler();
    EventHandler(const EventHandler&) = delete;
    EventHandler& operator=(const EventHandler&) = delete;

    /// Callback thread.
    void OnDeviceManagerEvent(const DeviceEvent& event);

    /// Any thread.
    DeviceHandles& Handles() { return m_handles; }

  private:
    void RequestTrackInfo();
    bool IsOpenDeviceGone(const DeviceEventView& event) const;
    void FollowPlayContext();

    PendingWork& m_pending;
    DeviceHandles& m_handles;
    std::atomic<ConnectionState>& m_connectionState;
    AudioStream& m_streamer;
    IIpodNotifications& m_notifications;
};
