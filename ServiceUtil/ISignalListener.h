// What is told of the process's termination signals.
#pragma once

/// Receives the process's termination signals from CSignalHandler.
class ISignalListener {
  public:
    virtual ~ISignalListener() = default;

    /// Called with SIGTERM or SIGINT on a thread of the signal handler's: an ordinary thread, not a signal
    /// context, so logging, locks and exit() are allowed here. One signal is told after the other, but a
    /// call that takes longer than CSignalHandler::kPatience may find the next one beside it.
    virtual void OnSignal(int signalNumber) = 0;
};
