// A descriptor that one thread polls and any other makes readable.
#pragma once

#include "JsonRpc/Descriptor.h"

namespace Json::Rpc {

class WakeUp {
  public:
    WakeUp();

    /// Makes the descriptor readable until it is cleared. Any thread, and signal handlers.
    void Raise() const;
    void Clear() const;

    int Fd() const { return m_fd.Get(); }

  private:
    Descriptor m_fd;
};

}  // namespace Json::Rpc
