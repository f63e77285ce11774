// A way from the library's root down to a list.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "IpodControl/commands/Answer.h"
#include "IpodControl/commands/NameSearch.h"

namespace IpodControl {

/// The browse position is the service's, one for all clients. So whatever is read or chosen here goes down
/// from the root in the same batch, in which no other client's request has a place.
class LibraryPath {
  public:
    explicit LibraryPath(Client& client) : m_client(client) {}

    /// Goes on to the item of that id, of the list where this is, at the next operation.
    void Enter(std::int64_t id) { m_ids.push_back(id); }
    /// Reads the list page by page, until `takes` says false to a page's items. The list's head is the
    /// answer's result: "isLastCategory", "totalCount".
    Answer Read(const std::function<bool(const std::vector<LibraryItem>& items)>& takes);
    /// Finds `name` in the list, which becomes `item`; as Read otherwise.
    Answer Find(const std::string& name, LibraryItem& item);
    /// Opens or plays an item of the list: "browsing" or "success".
    Answer Select(std::int64_t id);

  private:
    Answer GoAndAsk(const char* method, const Json::Value& params);

    Client& m_client;
    std::vector<std::int64_t> m_ids;
};

}  // namespace IpodControl
