#include "ServiceUtil/SignalHandler.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "ServiceUtil/ISignalListener.h"
#include "ServiceUtil/Logger.h"

namespace {

/// What the threads share. Never destroyed: a listener may call exit(), and then the static destructors run
/// while Notify is still iterating and others wait in Unregister.
struct Shared {
    std::mutex mutex;  // never held while a listener is called
    std::condition_variable idle;
    std::vector<ISignalListener*> listeners;  // guarded by mutex
    int notifying = 0;                        // calls of Notify under way; guarded by mutex
    bool stopping = false;                    // guarded by mutex
    std::thread watcher;                      // the singleton's constructor and destructor only
    int readEnd = -1;                         // set before the watcher starts
};

Shared& State() {
    static Shared& state = *new Shared;
    return state;
}

// The one thing that the signal context reads. The pipe is never closed, for a handler that began before the
// default action came back may still be about to write.
constinit std::atomic<int> g_writeEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free);

constexpr int kWakeUp = 0;  // no signal has this number

thread_local int t_notifyDepth = 0;

void WriteToPipe(int signalNumber) {
    const auto byte = static_cast<unsigned char>(signalNumber);
    // A full pipe holds more signals than anyone can be waiting for.
    [[maybe_unused]] const ssize_t written = ::write(g_writeEnd.load(), &byte, 1);
}

extern "C" void OnProcessSignal(int signalNumber) {
    const int savedErrno = errno;
    WriteToPipe(signalNumber);
    errno = savedErrno;
}

bool IsStopping() {
    const std::lock_guard lock(State().mutex);
    return State().stopping;
}

bool IsRegistered(const ISignalListener* listener) {
    const std::lock_guard lock(State().mutex);
    const auto& listeners = State().listeners;
    return std::find(listeners.begin(), listeners.end(), listener) != listeners.end();
}

/// One call of Notify: from Begin on, Unregister and the destructor know of it.
class NotifyScope {
  public:
    NotifyScope() = default;
    NotifyScope(const NotifyScope&) = delete;
    NotifyScope& operator=(const NotifyScope&) = delete;
    ~NotifyScope() {
        --t_notifyDepth;
        const std::lock_guard lock(State().mutex);
        --State().notifying;
        State().idle.notify_all();
    }

    std::vector<ISignalListener*> Begin() {
        ++t_notifyDepth;
        const std::lock_guard lock(State().mutex);
        ++State().notifying;
        return State().stopping ? std::vector<ISignalListener*>{} : State().listeners;
    }
};

void NotifyListeners(int signalNumber) {
    NotifyScope scope;
    for (ISignalListener* listener : scope.Begin()) {
        if (listener != nullptr && IsRegistered(listener)) {
            listener->OnSignal(signalNumber);
        }
    }
}

void WatchPipe() {
    unsigned char number = 0;
    while (!IsStopping() && ::read(State().readEnd, &number, 1) == 1) {
        if (number != kWakeUp) {
            NotifyListeners(number);
        }
    }
}

bool OpenPipe() {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return false;
    }
    State().readEnd = ends[0];
    g_writeEnd.store(ends[1]);
    return ::fcntl(ends[1], F_SETFL, O_NONBLOCK) == 0;
}

/// The thread takes no signal itself: they are for threads whose system calls may be interrupted.
bool StartWatcher() {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        State().watcher = std::thread(WatchPipe);
    } catch (const std::system_error&) {
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return State().watcher.joinable();
}

void SetAction(void (*action)(int), bool usable) {
    if (!usable || std::signal(SIGTERM, action) == SIG_ERR) {
        LOG_WARN("Error signal SIGTERM will not be handled\n");
    }
    if (!usable || std::signal(SIGINT, action) == SIG_ERR) {
        LOG_WARN("Error signal SIGINT will not be handled\n");
    }
}

}  // namespace

CSignalHandler& CSignalHandler::Instance() {
    struct AtExit {
        explicit AtExit(CSignalHandler& toStop) : handler(toStop) {}
        AtExit(const AtExit&) = delete;
        AtExit& operator=(const AtExit&) = delete;
        ~AtExit() { handler.Stop(); }
        CSignalHandler& handler;
    };
    static CSignalHandler& instance = *new CSignalHandler;
    static const AtExit atExit(instance);
    return instance;
}

CSignalHandler::CSignalHandler() {
    CLogger::Instance();  // created earlier, so destroyed later
    SetAction(OnProcessSignal, OpenPipe() && StartWatcher());
}

void CSignalHandler::Stop() {
    SetAction(SIG_DFL, true);
    Shared& state = State();
    {
        const std::lock_guard lock(state.mutex);
        state.stopping = true;
        // A listener that is being called may be the one that called exit(), or may be about to: never wait
        // for it.
        if (state.notifying > 0 || !state.watcher.joinable()) {
            return;
        }
    }
    WriteToPipe(kWakeUp);
    state.watcher.join();
}

void CSignalHandler::Register(ISignalListener* listener) {
    const std::lock_guard lock(State().mutex);
    std::erase(State().listeners, listener);
    State().listeners.push_back(listener);
}

void CSignalHandler::Unregister(ISignalListener* listener) {
    std::unique_lock lock(State().mutex);
    std::erase(State().listeners, listener);
    if (t_notifyDepth == 0) {
        State().idle.wait(lock, [] { return State().notifying == 0; });
    }
}

void CSignalHandler::Notify(int signalNumber) {
    NotifyListeners(signalNumber);
}
