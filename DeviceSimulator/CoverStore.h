// Where the covers of a library are kept.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "DeviceSimulator/Picture.h"

namespace DeviceSimulator {

/// In place of a cover's number.
constexpr std::uint32_t kNoCover = UINT32_MAX;

/// Any thread may call.
class CoverStore {
  public:
    virtual ~CoverStore() = default;

    /// The number of the cover that was made of the picture of this digest; none when it is not kept.
    virtual std::optional<std::uint32_t> Find(const std::string& digest) = 0;
    /// The number that it has from now on; kNoCover when it cannot be kept.
    virtual std::uint32_t Keep(const std::string& digest, const Picture& cover) = 0;
    /// Null when there is no such cover.
    virtual std::shared_ptr<const Picture> Read(std::uint32_t cover) = 0;
};

/// All of them in memory.
class MemoryCovers final : public CoverStore {
  public:
    std::optional<std::uint32_t> Find(const std::string&) override { return std::nullopt; }
    std::uint32_t Keep(const std::string&, const Picture& cover) override {
        auto kept = std::make_shared<const Picture>(cover);
        const std::lock_guard lock(m_mutex);
        m_covers.push_back(std::move(kept));
        return static_cast<std::uint32_t>(m_covers.size() - 1);
    }
    std::shared_ptr<const Picture> Read(std::uint32_t cover) override {
        const std::lock_guard lock(m_mutex);
        return cover < m_covers.size() ? m_covers[cover] : nullptr;
    }

  private:
    std::mutex m_mutex;
    std::vector<std::shared_ptr<const Picture>> m_covers;  // under m_mutex
};

}  // namespace DeviceSimulator
