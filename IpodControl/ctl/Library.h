// The library by names. The browse position is the service's, one for all clients.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "IpodControl/ctl/Ask.h"

namespace IpodControl {

struct LibraryItem {
    std::int64_t id = 0;
    std::string name;
};

/// Finds a name in a list that is handed over piece by piece.
class NameSearch {
  public:
    explicit NameSearch(std::string name);

    void Look(const LibraryItem& item);
    /// The first item of exactly that name, else the first whose name differs by upper and lower case only.
    const std::optional<LibraryItem>& Found() const { return m_exact ? m_exact : m_caseless; }
    bool IsExact() const { return m_exact.has_value(); }
    /// The names that come nearest, the best first.
    std::vector<std::string> Nearest() const;

  private:
    struct Candidate {
        std::size_t distance;
        std::string name;
    };

    const std::string m_name;
    const std::string m_folded;
    std::optional<LibraryItem> m_exact;
    std::optional<LibraryItem> m_caseless;
    std::vector<Candidate> m_nearest;  // sorted by distance
};

/// Reads the list that is open, page by page, until `takes` says false to a page's items. The list's head is
/// the answer's result: "isRootCategory", "isLastCategory", "totalCount".
Answer ReadList(Client& client, const std::function<bool(const Json::Value& items)>& takes);

}  // namespace IpodControl
