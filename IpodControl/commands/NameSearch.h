// Finds an item of a list by its name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace IpodControl {

struct LibraryItem {
    std::int64_t id = 0;
    std::string name;
};

/// In lower case, as far as letters have one.
std::string Folded(std::string_view text);

/// Looks at a list that is handed over item by item. Of several items of one name "name#2" is the second.
class NameSearch {
  public:
    explicit NameSearch(const std::string& name);

    void Look(const LibraryItem& item);
    /// The first item of exactly that name, else the first whose name differs by upper and lower case only,
    /// else in the same way the one of that number.
    const std::optional<LibraryItem>& Found() const;
    /// Nothing that follows is better.
    bool IsExact() const { return m_wanted.front().exact.found.has_value(); }
    /// The names that come nearest, the best first, each once.
    std::vector<std::string> Nearest() const;

  private:
    struct Match {
        std::int64_t count = 0;
        std::optional<LibraryItem> found;
    };
    struct Wanted {
        std::string name;
        std::string folded;
        std::int64_t number = 1;
        Match exact{};
        Match caseless{};
    };
    struct Candidate {
        std::size_t distance;
        std::string name;
    };

    void LookNear(const std::string& name, const std::string& folded);

    std::vector<Wanted> m_wanted;        // as it was typed, then with a number behind it
    std::vector<Candidate> m_nearest{};  // sorted by distance
};

}  // namespace IpodControl
