#include "JsonRpc/ClientConnection.h"

#include <sys/socket.h>
#include <unistd.h>

namespace Json::Rpc {

ClientConnection::~ClientConnection() {
    ::close(m_fd);
}

void ClientConnection::Shutdown() {
    if (!m_isDown.exchange(true)) {
        ::shutdown(m_fd, SHUT_RDWR);
    }
}

void ClientConnection::CloseSending() {
    const std::lock_guard turn(m_sendTurn);
    if (!m_isDown.exchange(true)) {
        ::shutdown(m_fd, SHUT_WR);
    }
}

}  // namespace Json::Rpc
