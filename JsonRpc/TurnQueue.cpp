#include "JsonRpc/TurnQueue.h"

#include "JsonRpc/Client.h"

namespace Json::Rpc {

void TurnQueue::Add(Client& client) {
    if (!client.isQueued) {
        (client.isQuick ? m_quick : m_slow).push_back(&client);
        client.isQueued = true;
    }
}

void TurnQueue::Remove(Client& client) {
    std::erase(m_quick, &client);
    std::erase(m_slow, &client);
}

void TurnQueue::Clear() {
    m_quick.clear();
    m_slow.clear();
}

void TurnQueue::BeginRound() {
    m_turnsLeft = m_quick.size() + (m_slow.empty() ? 0 : 1);
}

Client* TurnQueue::TakeNext() {
    if (m_turnsLeft == 0 || IsEmpty()) {
        return nullptr;
    }
    --m_turnsLeft;
    const bool isSlowOnesTurn = m_quick.empty() || (m_turnsLeft == 0 && !m_slow.empty());
    std::deque<Client*>& queue = isSlowOnesTurn ? m_slow : m_quick;
    Client* const client = queue.front();
    queue.pop_front();
    client->isQueued = false;
    return client;
}

}  // namespace Json::Rpc
