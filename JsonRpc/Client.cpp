#include "JsonRpc/Client.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "JsonRpc/Reply.h"

namespace Json::Rpc {

Client::Client(std::shared_ptr<Connection> connection, const Limits& limits)
    : m_limits(limits), m_connection(std::move(connection)), m_scanner(limits) {}

std::chrono::milliseconds Client::ConnectedTime(Clock::time_point now) const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now - m_connectedSince);
}

std::uint32_t Client::Events() const {
    const bool owes = m_connection->Owes();
    // A backlog stays for as long as an answer is owed, so nothing is read meanwhile.
    const bool reads = m_phase == Phase::Serving ? !m_hasBacklog : !owes;
    return (owes ? std::uint32_t{EPOLLOUT} : 0) | (reads ? std::uint32_t{EPOLLIN} : 0);
}

bool Client::Attend(std::uint32_t events) {
    if ((events & EPOLLOUT) != 0) {
        m_connection->Flush();
    }
    if ((events & (EPOLLERR | EPOLLHUP)) != 0 && (events & EPOLLIN) == 0) {
        m_connection->Shutdown(CloseReason::None);
    }
    return (events & EPOLLIN) != 0 || HasWork();
}

bool Client::HasWork() const {
    return m_phase == Phase::Serving && m_hasBacklog && !m_connection->OwesAnswer() &&
           !m_connection->IsDown();
}

void Client::TakeTurn(Turn& turn) {
    if (m_phase == Phase::Draining) {
        Discard(turn);
        return;
    }
    if (!m_hasBacklog) {
        Receive(turn);
    }
    for (bool isFirst = true; HasWork() && (isFirst || !turn.IsOver()); isFirst = false) {
        Serve(turn);
    }
}

void Client::Receive(Turn& turn) {
    const ssize_t count =
        ::recv(m_connection->Fd(), turn.readBuffer.data(), turn.readBuffer.size(), MSG_DONTWAIT);
    if (count > 0) {
        m_scanner->Append({turn.readBuffer.data(), static_cast<std::size_t>(count)});
        m_hasBacklog = true;
    } else if (count == 0) {
        m_scanner->End();
        m_hasBacklog = m_hasEnded = true;
    } else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
        m_connection->Shutdown(CloseReason::None);
    }
}

void Client::Discard(Turn& turn) {
    const ssize_t count =
        ::recv(m_connection->Fd(), turn.readBuffer.data(), turn.readBuffer.size(), MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)) {
        m_phase = Phase::Finished;
    }
}

void Client::Serve(Turn& turn) {
    if (m_batch) {
        ContinueBatch(turn);
        return;
    }
    const auto text = m_scanner->Next();
    if (!text) {
        AwaitMore();
        return;
    }
    m_waitedForSince.reset();
    ServeText(*text, turn);
    // Most requests come alone: no other look is needed to find that nothing follows.
    if (m_hasBacklog && !m_hasEnded && !m_batch && !m_connection->OwesAnswer()) {
        m_hasBacklog = !m_scanner->ReleaseTaken();
    }
}

void Client::ServeText(const FramedText& text, Turn& turn) {
    --turn.requestsLeft;
    switch (text.kind) {
        case FramedText::Kind::Request: {
            std::string reply = turn.server.Execute(text.text);
            turn.Used(reply.size());
            turn.Used(text.text.size());
            Answer(std::move(reply));
            return;
        }
        case FramedText::Kind::Batch:
            BeginBatch(text, turn);
            return;
        case FramedText::Kind::Malformed:
        case FramedText::Kind::Rubbish:
            Answer(ErrorReply(ErrorCode::ParseError));
            return;
        case FramedText::Kind::Http:
            EndService(CloseReason::Http);  // its error has been sent with the first byte
            return;
        case FramedText::Kind::TooLarge:
            Refuse(CloseReason::RequestTooLarge);
            return;
    }
}

void Client::BeginBatch(const FramedText& text, Turn& turn) {
    if (text.members == 0 || text.members > m_limits.batchRequests) {
        Answer(ErrorReply(ErrorCode::InvalidRequest));
        return;
    }
    m_batch.emplace(text.text);
    ContinueBatch(turn);
}

void Client::ContinueBatch(Turn& turn) {
    for (int left = m_limits.turnRequests; left > 0 && !m_batch->IsWhole(); --left) {
        if (turn.IsPaused()) {
            return;
        }
        m_batch->AnswerNext(turn.server, m_batch->ReplyBytes() >= m_limits.batchReplyBytes);
        --turn.requestsLeft;
    }
    if (m_batch->IsWhole()) {
        turn.Used(m_batch->ReplyBytes());
        Answer(m_batch->TakeReply());
        m_batch.reset();
    }
}

void Client::DeclineBatch(Server& server) {
    if (m_batch) {
        while (!m_batch->IsWhole()) {
            m_batch->AnswerNext(server, true);
        }
        Answer(m_batch->TakeReply());
        m_batch.reset();
    }
}

void Client::AwaitMore() {
    m_hasBacklog = false;
    if (m_hasEnded && !m_connection->Owes()) {
        m_phase = Phase::Finished;  // both have had all that the other said
    } else if (m_hasEnded) {
        EndService(CloseReason::None);
    } else if (m_scanner->IsInsideText() && !m_waitedForSince) {
        m_waitedForSince = Clock::now();
    }
}

std::size_t Client::UnfinishedBytes() const {
    return m_phase == Phase::Serving && m_waitedForSince ? m_scanner->HeldBytes() : 0;
}

void Client::Refuse(CloseReason reason) {
    if (m_phase == Phase::Serving) {
        Answer(ErrorReply(ErrorCode::ParseError));
        EndService(reason);
    }
}

void Client::EndService(CloseReason reason) {
    m_connection->EndSending(reason);
    m_scanner.emplace(m_limits);
    m_hasBacklog = false;
    m_phase = Phase::Draining;
    m_waitedForSince = Clock::now();
}

void Client::Answer(std::string reply) {
    m_connection->Send(std::move(reply), OutputQueue::Kind::Answer);
}

Client::Clock::time_point Client::Deadline() const {
    const auto waited = m_phase == Phase::Serving ? m_limits.requestTime : m_limits.drainTime;
    const auto progressEnd = m_connection->Owes() ? m_connection->ProgressEnd() : Clock::time_point::max();
    return m_waitedForSince ? std::min(*m_waitedForSince + waited, progressEnd) : progressEnd;
}

void Client::CheckTime(Clock::time_point now) {
    m_connection->CheckProgress(now);
    if (!m_waitedForSince) {
        return;
    }
    if (m_phase == Phase::Serving && now >= *m_waitedForSince + m_limits.requestTime) {
        Refuse(CloseReason::RequestUnfinished);
    } else if (m_phase == Phase::Draining && m_connection->Owes()) {
        m_waitedForSince = now;  // the time to read the last reply begins when it has gone
    } else if (m_phase == Phase::Draining && now >= *m_waitedForSince + m_limits.drainTime) {
        m_phase = Phase::Finished;
    }
}

}  // namespace Json::Rpc
