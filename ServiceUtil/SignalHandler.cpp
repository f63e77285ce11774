#include "ServiceUtil/SignalHandler.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <utility>

#include "ServiceUtil/ISignalListener.h"
#include "ServiceUtil/ListenerList.h"
#include "ServiceUtil/Logger.h"
#include "ServiceUtil/Mutex.h"
#include "ServiceUtil/Thread.h"

namespace {

/// Lets one watcher at a time tell a signal, until its patience with the one before ends.
class Turns {
  public:
    void Begin() EXCLUDES(m_mutex) {
        const auto deadline = std::chrono::steady_clock::now() + CSignalHandler::kPatience;
        const MutexLock lock(m_mutex);
        while (m_underWay > 0 && m_ended.WaitUntil(m_mutex, deadline)) {
        }
        ++m_underWay;
    }

    void End() EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        --m_underWay;
        m_ended.NotifyAll();
    }

  private:
    Mutex m_mutex;
    Condition m_ended;
    int m_underWay GUARDED_BY(m_mutex) = 0;
};

/// What the threads share. Never destroyed: a listener may call exit(), and then the static destructors run
/// while it is still being called and others wait in Unregister.
struct Shared {
    ListenerList<ISignalListener> listeners;
    Turns turns;
    Mutex reading;  // held while a signal is awaited and until its turn has come: signals keep their order
    std::atomic<bool> stopping{false};
    // The second is the first one's to start, at the first signal; Stop looks at it behind the first one's
    // end.
    std::array<Thread, 2> watchers;
    int readEnd = -1;  // set before the first watcher starts
};

Shared& State() {
    static Shared& state = *new Shared;
    return state;
}

// The one thing that the signal context reads. The pipe is never closed, for a handler that began before the
// default action came back may still be about to write.
constinit std::atomic<int> g_writeEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free);

/// A listener may call exit(): what the libraries do then is done here.
constexpr std::size_t kStackBytes = std::size_t{512} * 1024;

constexpr int kStop = 0;  // no signal has this number

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

/// Waits for the next signal and for its turn. False when the watchers are to end.
bool AwaitSignal(unsigned char& number) {
    Shared& state = State();
    const MutexLock lock(state.reading);
    if (state.stopping || ::read(state.readEnd, &number, 1) != 1 || number == kStop) {
        return false;
    }
    state.turns.Begin();
    return true;
}

void NotifyListeners(int signalNumber) {
    State().listeners.ForEach([&](ISignalListener& listener) { listener.OnSignal(signalNumber); });
}

void TellSignals(bool isSecondToCome);

/// The threads take no signal themselves: they are for threads whose system calls may be interrupted. Without
/// the second one signals are told, though a hanging listener holds up the next.
bool StartWatcher(Thread& watcher, bool isSecondToCome) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const bool isStarted = watcher.Start(kStackBytes, [isSecondToCome] { TellSignals(isSecondToCome); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return isStarted;
}

void TellSignals(bool isSecondToCome) {
    unsigned char number = 0;
    while (AwaitSignal(number)) {
        if (std::exchange(isSecondToCome, false)) {
            StartWatcher(State().watchers.back(), false);
        }
        NotifyListeners(number);
        State().turns.End();
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
    SetAction(OnProcessSignal, OpenPipe() && StartWatcher(State().watchers.front(), true));
}

void CSignalHandler::Stop() {
    SetAction(SIG_DFL, true);
    Shared& state = State();
    // A listener that is being called may be the one that called exit(), or may be about to: never wait for
    // it. A late signal that finds no listener any more is no reason not to.
    if (state.listeners.Close()) {
        return;
    }
    state.stopping = true;
    WriteToPipe(kStop);
    for (Thread& watcher : state.watchers) {
        watcher.Join();
    }
}

void CSignalHandler::Register(ISignalListener* listener) {
    if (listener != nullptr) {
        State().listeners.Add(listener);
    }
}

void CSignalHandler::Unregister(ISignalListener* listener) {
    State().listeners.Remove(listener);
}

void CSignalHandler::Notify(int signalNumber) {
    NotifyListeners(signalNumber);
}
