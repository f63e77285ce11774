#pragma once

/// Receives the process's termination signals from CSignalHandler.
class ISignalListener {
  public:
    virtual ~ISignalListener() = default;

    /// Called with SIGTERM or SIGINT on the signal handler's own thread: an ordinary thread, not a signal
    /// context, so logging, locks and exit() are allowed here.
    virtual void OnSignal(int signalNumber) = 0;
};
