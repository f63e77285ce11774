// A process that reaches the player through its own libdevicemanager.so: the device-manager processes that it
// has registered, the events that it has not been sent yet, and its calls.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

#include "DeviceSimulator/device/ManagerModel.h"
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
    explicit RemoteClient(Descriptor socket) : m_socket(std::move(socket)) {}

    /// The player can do without it: it was not to be had for want of descriptors.
    bool IsGood() const { return m_wakeUp.IsOpen(); }
    /// Sends events as they come, until the client has gone or is given up. Then nothing is registered any
    /// more.
    void SendEvents();

    /// As ManagerModel::Register, whose lock is held. Fails when the client has gone.
    DevMgrResult Register(ManagerModel& model, std::uint32_t& process, TimePoint now);

    void OnEvent(const DeviceEvent& event, std::uint32_t process) override;
    std::size_t Waiting() override;

  private:
    bool SendPending();
    void Leave();

    const Descriptor m_socket;
    const WakeUp m_wakeUp;  // an event has come
    std::mutex m_mutex;     // guards all below
    std::deque<Wire::EventMessage> m_events;
    bool m_hasLeft = false;
};

/// What a client's call is beside its function and arguments. Made by the thread that carries out the calls
/// of one connection, and that thread's as long as it lives.
struct RemoteCall {
    explicit RemoteCall(RemoteClient& caller);
    ~RemoteCall();
    RemoteCall(const RemoteCall&) = delete;
    RemoteCall& operator=(const RemoteCall&) = delete;

    /// That of the calling thread; null: this process calls for itself.
    static RemoteCall* Current();
    /// The kernel's number of the thread that calls, in whichever process.
    static std::uint64_t CallingThread();

    /// Memory for `address` in the client, which gets it as `memory`. As MapBlock.
    std::optional<MappedBlock> MapShared(std::uint32_t size, std::uint32_t address);

    RemoteClient& client;
    std::uint64_t thread = 0;
    Descriptor memory;  ///< what goes to the client beside the answer
};

}  // namespace DeviceSimulator
