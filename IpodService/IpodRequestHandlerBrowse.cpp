// The methods that walk the library. The browse position is the manager's, one for all clients.

#include <cstdio>

#include "IpodService/IpodManager.h"
#include "IpodService/IpodRequestHandler.h"
#include "IpodService/LetterJump.h"
#include "IpodService/RecordText.h"
#include "IpodService/Responses.h"
#include "IpodService/Utf8Text.h"

namespace {

const char* CategoryLabel(u32 category) {
    switch (category) {
        case DEV_MGR_CATEGORY_PLAYLIST:
            return "Playlists";
        case DEV_MGR_CATEGORY_ARTIST:
            return "Artists";
        case DEV_MGR_CATEGORY_ALBUM:
            return "Albums";
        case DEV_MGR_CATEGORY_GENRE:
            return "Genres";
        case DEV_MGR_CATEGORY_TRACK:
            return "Songs";
        case DEV_MGR_CATEGORY_COMPOSER:
            return "Composers";
        case DEV_MGR_CATEGORY_AUDIOBOOK:
            return "Audiobooks";
        case DEV_MGR_CATEGORY_PODCAST:
            return "Podcasts";
        case DEV_MGR_CATEGORY_TOP_LEVEL:
            return "All";
        default:
            return "Unknown";
    }
}

// A list may hold a hundred thousand items: their keys are shared and not copied into each.
const Json::StaticString kItemId("itemId");
const Json::StaticString kItemName("itemName");

Json::Value ItemObject(const BrowseItem& item) {
    Json::Value object(Json::objectValue);
    object[kItemId] = static_cast<Json::UInt>(item.id);
    object[kItemName] = WellFormedUtf8(RecordText(item.name), sizeof item.name);
    return object;
}

Json::Value TopCategoryList(const std::vector<TopCategoryEntry>& entries) {
    Json::Value list(Json::arrayValue);
    for (const TopCategoryEntry& entry : entries) {
        Json::Value object(Json::objectValue);
        object[kItemId] = static_cast<Json::Int>(entry.category);
        object[kItemName] = CategoryLabel(entry.category);
        object["isSupported"] = entry.supported != 0;
        list.append(std::move(object));
    }
    return list;
}

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

bool CIpodRequestHandler::GetBrowseList(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    const bool isRoot = !m_manager->IsBrowsing();
    i32 start = 0;
    u32 total = 0;
    Json::Value list(Json::arrayValue);
    if (isRoot) {
        list = TopCategoryList(m_manager->GetTopCategories());
    } else {
        const Json::Value& params = request["params"];
        start = params["startIndex"].asInt();
        total = m_manager->ListItems(start, params["itemCount"].asInt(),
                                     [&](const BrowseItem& item) { list.append(ItemObject(item)); });
    }
    Json::Value& result = response["result"];
    result["isRootCategory"] = isRoot;
    result["totalCount"] = static_cast<Json::Int>(total);
    result["currIndex"] = static_cast<Json::Int>(start);
    result["isLastCategory"] = m_manager->IsAtLeafCategory();
    result["categoryItems"] = std::move(list);
    return true;
}

bool CIpodRequestHandler::SelectBrowseItem(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    const Json::Value& params = request["params"];
    if (params.isNull()) {
        return true;
    }
    const u32 id = ItemId(params["itemId"]);
    const i32 outcome =
        m_manager->IsBrowsing() ? m_manager->BrowseInto(id) : m_manager->BrowseTopCategory(id);
    if (outcome == 0) {
        response["result"] = "browsing";
    } else {
        response["result"] = StatusWord(outcome == 1);
    }
    return true;
}

bool CIpodRequestHandler::SelectBrowseBack(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"] = StatusWord(m_manager->BrowseOneLevelBack() == 0);
    return true;
}

bool CIpodRequestHandler::FilterBrowseList(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    const Json::Value& params = request["params"];
    if (params.isNull()) {
        response["result"] = StatusWord(false);
        return true;
    }
    response["result"] = StatusWord(m_manager->SetItemFilter(params["searchText"].asString()) == 0);
    return true;
}

bool CIpodRequestHandler::ResetBrowseList(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["resetSuccess"] = m_manager->ResetDatabase() == 0;
    return true;
}

bool CIpodRequestHandler::GetSongList(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    if (m_manager->IsBrowsing()) {
        return true;
    }
    m_manager->BrowseTopCategory(DEV_MGR_CATEGORY_TRACK);
    Json::Value list(Json::arrayValue);
    if (!m_manager->ListAllItems([&](const BrowseItem& item) { list.append(ItemObject(item)); })) {
        return true;
    }
    Json::Value& result = response["result"];
    result["isRootCategory"] = false;
    result["isLastCategory"] = m_manager->IsAtLeafCategory();
    result["categoryItems"] = std::move(list);
    return true;
}

bool CIpodRequestHandler::GetNextAlphaNumericIndex(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["itemIndex"] =
        static_cast<Json::Int>(Jump(*m_manager, request["params"], NextInitialIndex, -1));
    return true;
}

bool CIpodRequestHandler::GetPrevAlphaNumericIndex(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["itemIndex"] =
        static_cast<Json::Int>(Jump(*m_manager, request["params"], PreviousInitialIndex, 0));
    return true;
}
