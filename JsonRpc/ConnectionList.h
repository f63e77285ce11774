// The connected clients, for all threads.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "JsonRpc/Connection.h"
#include "ServiceUtil/Mutex.h"

namespace Json::Rpc {

/// Any thread may call any of it; nothing waits for a client.
class ConnectionList {
  public:
    struct Delivery {
        std::size_t clients = 0;      ///< that got the text or have it queued
        bool needsAttention = false;  ///< for some it was queued, or the connection broken
    };

    void Add(std::shared_ptr<Connection> connection);
    void Remove(const Connection& connection);

    /// The descriptors of those that take texts, oldest first.
    std::vector<int> Descriptors() const;

    /// Null when there is none.
    std::shared_ptr<Connection> Find(int fd) const;

    /// Hands the text to all. Two broadcasts arrive in the same order everywhere.
    Delivery Broadcast(const SharedText& text);

  private:
    mutable Mutex m_mutex;  // held across sends that never wait
    std::vector<std::shared_ptr<Connection>> m_connections GUARDED_BY(m_mutex);
};

}  // namespace Json::Rpc
