// Finds an item of a list by its name.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace IpodControl {

/// In lower case, as far as letters have one.
std::string Folded(std::string_view text);

/// Looks at a list that is handed over item by item. Of several items of one name "name#2" is the second.
class NameSearch {
  public:
    explicit NameSearch(const std::string& name);

    void Look(const Json::Value& item);
    /// The first item of exactly that name, else the first whose name differs by upper and lower case only,
    /// else in the same way the one of that number; else null.
    const Json::Value& Found() const;
    /// Nothing that follows is better.
    bool IsExact() const { return m_wanted.front().exact.item.isObject(); }
    /// The names that come nearest, the best first, each once.
    std::vector<std::string> Nearest() const;

  private:
    struct Match {
        std::int64_t count = 0;
        Json::Value item{};
    };
    struct Wanted {
        std::string name;
        std::string folded;
        std::int64_t number = 1;
        Match exact{};
        Match caseless{};
    };

    void LookNear(const std::string& name, const std::string& folded);

    std::vector<Wanted> m_wanted;                         // as it was typed, then with a number behind it
    std::multimap<std::size_t, std::string> m_nearest{};  // by distance; the first of equal ones first
};

}  // namespace IpodControl
