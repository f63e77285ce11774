#include "IpodControl/ctl/Library.h"

#include <algorithm>

#include "IpodControl/Fields.h"
#include "IpodControl/ctl/Text.h"

namespace IpodControl {

namespace {

constexpr std::int64_t kPage = 1000;
constexpr std::size_t kMostNearest = 3;

/// Small when one name contains the other, so that a part of a name leads to the whole.
std::size_t Distance(const std::string& left, const std::string& right) {
    if (left.find(right) != std::string::npos || right.find(left) != std::string::npos) {
        return 1;
    }
    // More letters than any list has in a column tell nothing more.
    constexpr std::size_t kMostLetters = 64;
    return 1 + EditDistance(Shortened(left, kMostLetters), Shortened(right, kMostLetters));
}

}  // namespace

NameSearch::NameSearch(std::string name) : m_name(std::move(name)), m_folded(Folded(m_name)) {}

void NameSearch::Look(const LibraryItem& item) {
    if (!m_exact && item.name == m_name) {
        m_exact = item;
    }
    const std::string folded = Folded(item.name);
    if (!m_caseless && folded == m_folded) {
        m_caseless = item;
    }
    if (Found() || folded.empty() || m_folded.empty()) {
        return;
    }
    const std::size_t distance = Distance(folded, m_folded);
    if (distance > 1 + m_folded.size() / 2) {
        return;
    }
    const auto behind =
        std::find_if(m_nearest.begin(), m_nearest.end(),
                     [distance](const Candidate& candidate) { return candidate.distance > distance; });
    m_nearest.insert(behind, {distance, item.name});
    m_nearest.resize(std::min(m_nearest.size(), kMostNearest));
}

std::vector<std::string> NameSearch::Nearest() const {
    // Beside one that is nearly it, what is much farther off only distracts.
    constexpr std::size_t kSpread = 2;
    std::vector<std::string> names;
    for (const Candidate& candidate : m_nearest) {
        if (candidate.distance <= m_nearest.front().distance + kSpread) {
            names.push_back(candidate.name);
        }
    }
    return names;
}

Answer ReadList(Client& client, const std::function<bool(const Json::Value& items)>& takes) {
    std::int64_t read = 0;
    std::int64_t total = kPage;
    for (;;) {
        Json::Value params;
        params["startIndex"] = Json::Int64{read};
        // Lists are circular: more than there is would begin again.
        params["itemCount"] = Json::Int64{std::min(kPage, total - read)};
        Answer answer = Ask(client, "getBrowseList", params);
        const Json::Value& items = Field(answer.result, "categoryItems");
        if (answer.status != kDone || !takes(items)) {
            return answer;
        }
        read += items.size();
        total = IntegerField(answer.result, "totalCount").value_or(0);
        if (items.empty() || read >= total) {
            return answer;
        }
    }
}

}  // namespace IpodControl
