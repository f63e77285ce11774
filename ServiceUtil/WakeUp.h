// A descriptor that one thread polls and any other makes readable.
#pragma once

#include "ServiceUtil/Descriptor.h"

class WakeUp {
  public:
    WakeUp();

    /// False where the process has no descriptor left: nobody is woken then.
    bool IsOpen() const { return m_fd.IsOpen(); }

    /// Makes the descriptor readable until it is cleared. Any thread, and signal handlers.
    void Raise() const;
    void Clear() const;

    int Fd() const { return m_fd.Get(); }

  private:
    Descriptor m_fd;
};
