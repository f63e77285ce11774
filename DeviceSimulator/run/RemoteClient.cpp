#include "DeviceSimulator/run/RemoteClient.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "DeviceSimulator/run/Engine.h"
#include "DeviceSimulator/wire/Stream.h"

namespace DeviceSimulator {

namespace {

thread_local RemoteCall* t_call = nullptr;

}  // namespace

RemoteCall::RemoteCall(RemoteClient& caller) : client(caller) {
    t_call = this;
}

RemoteCall::~RemoteCall() {
    t_call = nullptr;
}

RemoteCall* RemoteCall::Current() {
    return t_call;
}

std::uint64_t RemoteCall::CallingThread() {
    return t_call != nullptr ? t_call->thread : static_cast<std::uint64_t>(syscall(SYS_gettid));
}

std::optional<MappedBlock> RemoteCall::MapShared(std::uint32_t size, std::uint32_t address) {
    memory = Descriptor(memfd_create("devmgr-block", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    // Its size is fixed: neither process can take it away under the other.
    if (address == 0 || !memory.IsOpen() || ftruncate(memory.Get(), size) != 0 ||
        fcntl(memory.Get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) {
        return std::nullopt;
    }
    void* const start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, memory.Get(), 0);
    if (start == MAP_FAILED) {
        return std::nullopt;
    }
    const std::shared_ptr<void> owner(start, [size](void* mapped) { munmap(mapped, size); });
    return MappedBlock{address, {static_cast<std::uint8_t*>(start), size}, owner};
}

void RemoteClient::SendEvents() {
    for (;;) {
        // The client says nothing on this connection: what can be read is its end.
        pollfd ready[] = {{m_socket.Get(), POLLIN, 0}, {m_wakeUp.Fd(), POLLIN, 0}};
        if (poll(ready, std::size(ready), -1) < 0 && errno != EINTR) {
            break;
        }
        m_wakeUp.Clear();
        if (ready[0].revents != 0 || !SendPending()) {
            break;
        }
    }
    Leave();
}

DevMgrResult RemoteClient::Register(ManagerModel& model, std::uint32_t& process, TimePoint now) {
    const std::lock_guard lock(m_mutex);
    // Leave, which waits for the model's lock, finds what is registered by now.
    return m_hasLeft ? DEV_MGR_PROCESS_REGISTRY_FAILED : model.Register(shared_from_this(), process, now);
}

void RemoteClient::OnEvent(const DeviceEvent& event, std::uint32_t process) {
    const std::lock_guard lock(m_mutex);
    if (m_events.size() < kMostEvents) {
        m_events.push_back({process, event});
        m_wakeUp.Raise();
        return;
    }
    if (!m_hasLeft) {
        std::fprintf(stderr, "device simulator: a client takes no events, %zu wait: it is given up\n",
                     m_events.size());
        m_hasLeft = true;
        shutdown(m_socket.Get(), SHUT_RDWR);
    }
}

std::size_t RemoteClient::Waiting() {
    const std::lock_guard lock(m_mutex);
    return m_events.size();
}

bool RemoteClient::SendPending() {
    for (;;) {
        Wire::EventMessage message;
        {
            const std::lock_guard lock(m_mutex);
            if (m_events.empty()) {
                return true;
            }
            message = m_events.front();
            m_events.pop_front();
        }
        if (!Wire::SendFlat(m_socket.Get(), message)) {
            return false;
        }
    }
}

void RemoteClient::Leave() {
    {
        const std::lock_guard lock(m_mutex);
        m_hasLeft = true;
    }
    shutdown(m_socket.Get(), SHUT_RDWR);
    // Without this client's lock, which is taken under the model's.
    Engine::Instance().Loop().Locked([this](ManagerModel& model, TimePoint now) {
        for (const std::uint32_t process : model.Processes().Handles()) {
            if (model.Processes().Listener(process).get() == this) {
                model.Abandon(process, now);
            }
        }
    });
}

}  // namespace DeviceSimulator
