// Whose turn it is.
#pragma once

#include <cstddef>
#include <deque>

#include "ServiceUtil/ThreadRole.h"

namespace Json::Rpc {

class Client;

/// Clients that wait for their turns, in rounds: in each the quick ones have a turn, and one of the others.
/// So nobody who asks for little waits for more than one of those who ask for much, and these get on as well.
/// A client is quick when one of its last two turns was short. Not owned; a client is in the queue once.
/// Server thread only.
class TurnQueue {
  public:
    /// Puts the client at the end, unless it is in the queue.
    void Add(Client& client) REQUIRES(kServerThread);
    void Remove(Client& client) REQUIRES(kServerThread);
    void Clear() REQUIRES(kServerThread);
    bool IsEmpty() const REQUIRES(kServerThread) { return m_quick.empty() && m_slow.empty(); }

    /// Those in the queue now have their turns; those who come later wait for the next round.
    void BeginRound() REQUIRES(kServerThread);
    /// Takes the next client of the round out of the queue; null when the round is over.
    Client* TakeNext() REQUIRES(kServerThread);

  private:
    std::deque<Client*> m_quick GUARDED_BY(kServerThread);
    std::deque<Client*> m_slow GUARDED_BY(kServerThread);
    std::size_t m_turnsLeft GUARDED_BY(kServerThread) = 0;
};

}  // namespace Json::Rpc
