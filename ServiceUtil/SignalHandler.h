// The process's termination signals, told to listeners on an ordinary thread.
#pragma once

#include <chrono>

class ISignalListener;

/// Catches SIGTERM and SIGINT for the whole process and passes each to the registered listeners. The signal
/// context only writes the number to a pipe; threads of this class's own, which nothing else ever wakes, turn
/// it into Notify, so listeners may log, lock and call exit().
class CSignalHandler {
  public:
    /// How long the next signal waits for the listeners to take the one before. With a listener that hangs
    /// it is then told all the same, by a second thread, which the first signal has started; the ones after
    /// it wait.
    static constexpr std::chrono::milliseconds kPatience{200};

    /// Any thread. Created on first use, which installs the handlers; the default actions come back at
    /// process exit. When the handlers cannot be installed, two warnings are logged and the signals keep
    /// their default action. The object stays valid to the very end: with exit() called from a listener,
    /// other threads may still be using it.
    static CSignalHandler& Instance();

    CSignalHandler(const CSignalHandler&) = delete;
    CSignalHandler& operator=(const CSignalHandler&) = delete;

    virtual ~CSignalHandler() = default;

    /// Adds the listener (not owned) at the end; one that is registered already moves there. Null is ignored.
    /// Any thread.
    void Register(ISignalListener* listener);

    /// Removes the listener and waits for calls of it that are under way on other threads: when it has
    /// returned, nothing calls the listener any more. An unknown listener is ignored. Any thread; a listener
    /// may call it from OnSignal, for itself.
    void Unregister(ISignalListener* listener);

    /// Calls OnSignal of every listener, in the order of registration. Any thread.
    void Notify(int signalNumber);

  private:
    CSignalHandler();

    /// At process exit: restores the default actions, then stops and joins the threads, unless a listener is
    /// being called: that may be the one that called exit(), so it waits for nothing.
    void Stop();
};
