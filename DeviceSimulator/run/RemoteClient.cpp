#include "DeviceSimulator/run/RemoteClient.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>

#include "DeviceSimulator/run/Engine.h"
#include "DeviceSimulator/run/Sessions.h"
#include "DeviceSimulator/wire/Stream.h"

namespace DeviceSimulator {

namespace {

/// Memory that two processes share. Its size is fixed: neither can take it away under the other.
std::optional<MappedBlock> MakeShared(std::uint32_t size, std::uint32_t address, Descriptor& file) {
    file = Descriptor(memfd_create("devmgr-block", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (address == 0 || !file.IsOpen() || ftruncate(file.Get(), size) != 0 ||
        fcntl(file.Get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) {
        return std::nullopt;
    }
    void* const start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
    if (start == MAP_FAILED) {
        return std::nullopt;
    }
    const std::shared_ptr<void> owner(start, [size](void* mapped) { munmap(mapped, size); });
    return MappedBlock{address, {static_cast<std::uint8_t*>(start), size}, owner};
}

}  // namespace

RemoteClient::RemoteClient(Descriptor socket) : m_socket(std::move(socket)) {}

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

std::uint32_t RemoteClient::Register(std::uint32_t* process, DeviceEventCallback callback) {
    const auto result = RegisterProcess(process, callback, shared_from_this());
    if (result == DEV_MGR_SUCCESS && !Keep(*process)) {
        // Without this client's lock: an event under way has the model's and wants this one.
        Engine::Instance().Loop().Abandon(*process);
    }
    return result;
}

bool RemoteClient::Keep(std::uint32_t process) {
    const std::lock_guard lock(m_mutex);
    if (!m_hasLeft) {
        m_processes.insert(process);
    }
    return !m_hasLeft;
}

std::uint32_t RemoteClient::Allocate(std::uint32_t process, std::uint32_t* size, std::uint32_t* block,
                                     Descriptor& memory) {
    const std::uint32_t address = block != nullptr ? *block : 0;
    return AllocateMemory(process, size, block,
                          [&](std::uint32_t wanted) { return MakeShared(wanted, address, memory); });
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
    std::set<std::uint32_t> processes;
    {
        const std::lock_guard lock(m_mutex);
        m_hasLeft = true;
        processes.swap(m_processes);
    }
    shutdown(m_socket.Get(), SHUT_RDWR);
    for (const std::uint32_t process : processes) {
        // One that has deregistered in order is not there any more.
        Engine::Instance().Loop().Abandon(process);
    }
}

}  // namespace DeviceSimulator
