// The owner of a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

class Descriptor {
  public:
    /// Takes `fd` over; a negative one is none.
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        other.Close();
        return *this;
    }
    ~Descriptor() { Close(); }

    void Close() {
        if (m_fd >= 0) {
            ::close(std::exchange(m_fd, -1));
        }
    }
    bool IsOpen() const { return m_fd >= 0; }
    int Get() const { return m_fd; }

  private:
    int m_fd;
};
