// The methods that walk the library. The browse position is the manager's, one for all clients.

#include <cstdio>
#include <string>
#include <utility>

#include "IpodService/IpodManager.h"
#include "IpodService/IpodRequestHandler.h"
#include "IpodService/ItemListText.h"
#include "IpodService/LetterJump.h"
#include "IpodService/Responses.h"

namespace {

using Json::Rpc::ObjectText;

/// An id as the client was given it, or those 32 bits as a signed number.
u32 ItemId(const Json::Value& value) {
    return value.isUInt() ? value.asUInt() : static_cast<u32>(value.asInt());
}

i32 Jump(const IpodManager& manager, const Json::Value& params, JumpFunction find, i32 notBrowsing)
    REQUIRES(kServerThread) {
    if (!manager.IsBrowsing()) {
        std::puts("Not Browsing");
        std::fflush(stdout);
        return notBrowsing;
    }
    return manager.Jump(find, params["startIndex"].asInt());
}

}  // namespace

bool CIpodRequestHandler::GetBrowseList(const Request& request, std::string& result) {
    const bool isRoot = !m_manager->IsBrowsing();
    i32 start = 0;
    u32 total = 0;
    ObjectText page(result);
    page.Begin("categoryItems") += '[';
    if (isRoot) {
        for (const TopCategoryEntry& entry : m_manager->GetTopCategories()) {
            ItemListText::Append(result, entry);
        }
    } else {
        const Json::Value& params = request.Params();
        start = params["startIndex"].asInt();
        total = m_manager->ListItems(start, params["itemCount"].asInt(), [&result](const BrowseItem& item) {
            ItemListText::Append(result, item);
        });
    }
    result += ']';
    page.Add("currIndex", start)
        .Add("isLastCategory", m_manager->IsAtLeafCategory())
        .Add("isRootCategory", isRoot)
        .Add("totalCount", static_cast<i32>(total))
        .End();
    return true;
}

bool CIpodRequestHandler::SelectBrowseItem(const Request& request, std::string& result) {
    const Json::Value& params = request.Params();
    if (params.isNull()) {
        return true;
    }
    const u32 id = ItemId(params["itemId"]);
    const i32 outcome =
        m_manager->IsBrowsing() ? m_manager->BrowseInto(id) : m_manager->BrowseTopCategory(id);
    if (outcome == 0) {
        result += "\"browsing\"";
        return true;
    }
    return AppendStatus(result, outcome == 1);
}

bool CIpodRequestHandler::SelectBrowseBack(const Request&, std::string& result) {
    return AppendStatus(result, m_manager->BrowseOneLevelBack() == 0);
}

bool CIpodRequestHandler::FilterBrowseList(const Request& request, std::string& result) {
    const Json::Value& params = request.Params();
    if (params.isNull()) {
        return AppendStatus(result, false);
    }
    return AppendStatus(result, m_manager->SetItemFilter(params["searchText"].asString()) == 0);
}

bool CIpodRequestHandler::ResetBrowseList(const Request&, std::string& result) {
    return AppendMember(result, "resetSuccess", m_manager->ResetDatabase() == 0);
}

bool CIpodRequestHandler::GetSongList(const Request&, std::string& result) {
    if (m_manager->IsBrowsing()) {
        return true;
    }
    m_manager->BrowseTopCategory(DEV_MGR_CATEGORY_TRACK);
    const std::size_t before = result.size();
    ObjectText songs(result);
    songs.Begin("categoryItems") += '[';
    if (!m_manager->ListAllItems([&result](const BrowseItem& item) { ItemListText::Append(result, item); })) {
        result.resize(before);
        return true;
    }
    result += ']';
    songs.Add("isLastCategory", m_manager->IsAtLeafCategory()).Add("isRootCategory", false).End();
    return true;
}

bool CIpodRequestHandler::GetNextAlphaNumericIndex(const Request& request, std::string& result) {
    return AppendMember(result, "itemIndex", Jump(*m_manager, request.Params(), NextInitialIndex, -1));
}

bool CIpodRequestHandler::GetPrevAlphaNumericIndex(const Request& request, std::string& result) {
    return AppendMember(result, "itemIndex", Jump(*m_manager, request.Params(), PreviousInitialIndex, 0));
}
