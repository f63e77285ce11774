#include "DeviceSimulator/run/PlayerServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "DeviceSimulator/run/Engine.h"
#include "DeviceSimulator/run/RemoteClient.h"
#include "DeviceSimulator/wire/Arguments.h"
#include "DeviceSimulator/wire/FunctionId.h"
#include "DeviceSimulator/wire/Stream.h"
#include "DeviceSimulator/wire/Thread.h"

namespace DeviceSimulator {

namespace {

/// After a failed accept, for want of descriptors or memory.
constexpr int kAcceptPauseMs = 100;
constexpr std::size_t kMostConnections = 512;

using Carrier = std::optional<std::uint32_t> (*)(Wire::Taker&, Wire::Bytes&);

/// Room for the head, then what the call gives, which also may leave `call.memory`. False when the call makes
/// no sense.
bool Answer(RemoteCall& call, std::span<const std::byte> message, Wire::Bytes& answer) {
    static constexpr Carrier kCarriers[] = {
#define DEVICE_SIMULATOR_CARRIER(function, parameters) \
    [](Wire::Taker& taker, Wire::Bytes& bytes) { return Wire::Carry(&::function, taker, bytes); },
        DEVICE_MANAGER_FUNCTIONS(DEVICE_SIMULATOR_CARRIER)
#undef DEVICE_SIMULATOR_CARRIER
    };
    Wire::Taker taker(message);
    const auto head = taker.Take<Wire::CallHead>();
    if (head.function >= kFunctionCount) {
        return false;
    }
    call.thread = head.thread;
    answer.assign(sizeof(Wire::AnswerHead), {});
    const auto result = kCarriers[head.function](taker, answer);
    if (!result) {
        return false;
    }
    const Wire::AnswerHead answerHead{static_cast<std::uint32_t>(answer.size() - sizeof(Wire::AnswerHead)),
                                      *result};
    std::memcpy(answer.data(), &answerHead, sizeof(answerHead));
    if (*result != DEV_MGR_SUCCESS) {
        call.memory.Close();
    }
    return true;
}

bool IsHello(const Wire::Hello& hello) {
    return hello.magic == Wire::kMagic && hello.version == Wire::kVersion &&
           hello.firstProcess <= Wire::kLastFirstProcess;
}

class PlayerServer {
  public:
    PlayerServer(Descriptor listener, bool isStaying)
        : m_listener(std::move(listener)), m_isStaying(isStaying) {}

    [[noreturn]] void Run() {
        for (;;) {
            Descriptor socket(accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (socket.IsOpen()) {
                Start(std::move(socket));
            } else if (errno != EINTR && errno != ECONNABORTED) {
                poll(nullptr, 0, kAcceptPauseMs);
            }
        }
    }

  private:
    void Start(Descriptor socket) {
        ++m_holders;
        if (++m_connections <= kMostConnections && Wire::IsOwnUser(socket.Get())) {
            try {
                StartThread("devmgr-client", [this, moved = std::move(socket)]() mutable {
                    Serve(std::move(moved));
                }).detach();
                return;
            } catch (const std::exception& error) {
                std::fprintf(stderr, "device simulator: a client is turned away: %s\n", error.what());
            }
        }
        --m_connections;
        Leave();
    }

    void Serve(Descriptor socket) {
        Wire::Hello hello;
        Wire::LimitTime(socket.Get(), true);
        const bool isKnown = Wire::ReceiveFlat(socket.Get(), hello) && IsHello(hello);
        bool serves = false;
        try {
            if (isKnown && hello.kind == Wire::ConnectionKind::Events) {
                ServeClient(std::move(socket), hello);
            } else {
                // To one of another version too, which then knows why.
                const Wire::HelloAnswer answer{.isWelcome = isKnown ? 1U : 0U};
                serves = Wire::SendFlat(socket.Get(), answer) && isKnown;
                Wire::LimitTime(socket.Get(), false);
            }
        } catch (const std::exception& error) {
            std::fprintf(stderr, "device simulator: a client is turned away: %s\n", error.what());
        }
        Leave();
        if (serves) {
            ServeCalls(socket.Get(), hello.client);
        }
        --m_connections;
    }

    void ServeClient(Descriptor socket, const Wire::Hello& hello) {
        const int descriptor = socket.Get();
        const auto client = std::make_shared<RemoteClient>(std::move(socket));
        if (!client->IsGood()) {
            return;
        }
        Engine::Instance().Loop().Locked(
            [&](ManagerModel& model, TimePoint) { model.SkipProcessesTo(hello.firstProcess); });
        {
            const std::lock_guard lock(m_mutex);
            if (!m_clients.try_emplace(hello.client, client).second) {
                return;
            }
        }
        // Known first: its connections for calls may come as soon as it is welcome.
        if (Wire::SendFlat(descriptor, Wire::HelloAnswer{.isWelcome = 1})) {
            Wire::LimitTime(descriptor, false);
            client->SendEvents();
        }
        const std::lock_guard lock(m_mutex);
        m_clients.erase(hello.client);
    }

    void ServeCalls(int socket, std::uint64_t number) {
        std::shared_ptr<RemoteClient> client;
        {
            const std::lock_guard lock(m_mutex);
            const auto found = m_clients.find(number);
            if (found == m_clients.end()) {
                return;
            }
            client = found->second;
        }
        Wire::Bytes buffer;
        Wire::Bytes answer;
        Descriptor none;
        RemoteCall call(*client);
        try {
            for (bool isSent = true; isSent;) {
                const auto message =
                    Wire::ReceiveMessage(socket, buffer, sizeof(Wire::CallHead), Wire::kLongestCall, none);
                isSent = !message.empty() && Answer(call, message, answer) &&
                         (call.memory.IsOpen() ? Wire::SendWith(socket, answer, call.memory.Get())
                                               : SendAll(socket, answer));
                call.memory.Close();
            }
        } catch (const std::exception& error) {
            std::fprintf(stderr, "device simulator: a connection ends: %s\n", error.what());
        }
    }

    /// A client that comes while the player ends finds its connection closed, and starts another player.
    void Leave() {
        if (--m_holders != 0 || m_isStaying) {
            return;
        }
        pollfd waiting{m_listener.Get(), POLLIN, 0};
        if (poll(&waiting, 1, 0) <= 0) {
            // Nothing is to be saved, and threads may be at work anywhere.
            _exit(0);
        }
    }

    const Descriptor m_listener;
    const bool m_isStaying;
    std::atomic<std::size_t> m_connections{0};
    std::atomic<std::size_t> m_holders{0};  // keep it running: clients, and who has not said yet what it is
    std::mutex m_mutex;
    std::map<std::uint64_t, std::shared_ptr<RemoteClient>> m_clients;  // by their own numbers; under m_mutex
};

}  // namespace

void ServePlayer(Descriptor listener, bool isStaying) {
    PlayerServer(std::move(listener), isStaying).Run();
}

}  // namespace DeviceSimulator
