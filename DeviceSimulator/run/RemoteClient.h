// A process that reaches the player through its own libdevicemanager.so: the device-manager processes that it
// has registered, and the events that it has not been sent yet.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <set>

#include "DeviceSimulator/device/ProcessRegistry.h"
#include "DeviceSimulator/wire/Protocol.h"
#include "ServiceUtil/Descriptor.h"
#include "ServiceUtil/WakeUp.h"

namespace DeviceSimulator {

/// In a shared_ptr: an event may be on its way to it when it goes. Every member may be called from any
/// thread, but for SendEvents.
class RemoteClient : public EventListener, public std::enable_shared_from_this<RemoteClient> {
  public:
    /// One that is further behind than that is given up.
    static constexpr std::size_t kMostEvents = 4096;

    /// `socket`: the connection that its events go to.
    explicit RemoteClient(Descriptor socket);

    /// The player can do without it: it was not to be had for want of descriptors.
    bool IsGood() const { return m_wakeUp.IsOpen(); }
    /// Sends events as they come, until the client has gone or is given up. Then nothing is registered any
    /// more.
    void SendEvents();

    // What its calls need.

    std::uint32_t Register(std::uint32_t* process, DeviceEventCallback callback);
    std::uint32_t Allocate(std::uint32_t process, std::uint32_t* size, std::uint32_t* block,
                           Descriptor& memory);

    void OnEvent(const DeviceEvent& event, std::uint32_t process) override;
    std::size_t Waiting() override;

  private:
    /// False when the client has left.
    bool Keep(std::uint32_t process);
    bool SendPending();
    void Leave();

    const Descriptor m_socket;
    const WakeUp m_wakeUp;  // an event has come
    std::mutex m_mutex;     // guards all below
    std::deque<Wire::EventMessage> m_events;
    std::set<std::uint32_t> m_processes;
    bool m_hasLeft = false;
};

}  // namespace DeviceSimulator
