// A file descriptor with one owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace DeviceSimulator {

class UniqueFd {
  public:
    explicit UniqueFd(int fd = -1) : m_fd(fd) {}
    ~UniqueFd() {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }
    UniqueFd(UniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }

    int Get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }

  private:
    int m_fd;
};

}  // namespace DeviceSimulator
