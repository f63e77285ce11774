#include "JsonRpc/ConnectionList.h"

#include <algorithm>
#include <utility>

namespace Json::Rpc {

void ConnectionList::Add(std::shared_ptr<Connection> connection) {
    const MutexLock lock(m_mutex);
    m_connections.push_back(std::move(connection));
}

void ConnectionList::Remove(const Connection& connection) {
    const MutexLock lock(m_mutex);
    std::erase_if(m_connections, [&](const auto& listed) { return listed.get() == &connection; });
}

std::vector<int> ConnectionList::Descriptors() const {
    const MutexLock lock(m_mutex);
    std::vector<int> descriptors;
    descriptors.reserve(m_connections.size());
    for (const auto& connection : m_connections) {
        if (connection->TakesTexts()) {
            descriptors.push_back(connection->Fd());
        }
    }
    return descriptors;
}

std::shared_ptr<Connection> ConnectionList::Find(int fd) const {
    const MutexLock lock(m_mutex);
    const auto found = std::find_if(m_connections.begin(), m_connections.end(),
                                    [fd](const auto& connection) { return connection->Fd() == fd; });
    return found != m_connections.end() ? *found : nullptr;
}

ConnectionList::Delivery ConnectionList::Broadcast(const SharedText& text) {
    const MutexLock lock(m_mutex);
    Delivery delivery;
    for (const auto& connection : m_connections) {
        const auto sent = connection->Send(text, OutputQueue::Kind::Notification);
        delivery.clients += sent == Connection::Sent::Refused ? 0 : 1;
        delivery.needsAttention = delivery.needsAttention || sent != Connection::Sent::Whole;
    }
    return delivery;
}

}  // namespace Json::Rpc
