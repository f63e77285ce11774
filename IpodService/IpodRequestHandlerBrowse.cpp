// The methods that walk the library. The browse position is the manager's, one for all clients.

#include <cstdio>

#include "IpodService/BrowsePaging.h"
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
    object[kItemName] = WellFormedUtf8(RecordText(item.name).View(), sizeof item.name);
    return object;
}

Json::Value ItemList(const BrowseItem* items, u32 count) {
    Json::Value list(Json::arrayValue);
    for (u32 i = 0; i < count; ++i) {
        list.append(ItemObject(items[i]));
    }
    return list;
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

Json::Value FilteredList(const std::vector<const BrowseItem*>& matches, i32 start, i32 count) {
    Json::Value list(Json::arrayValue);
    for (const std::size_t position : FilteredPositions(matches.size(), start, count)) {
        list.append(ItemObject(*matches[position]));
    }
    return list;
}

/// An id as the client was given it, or those 32 bits as a signed number.
u32 ItemId(const Json::Value& value) {
    return value.isUInt() ? value.asUInt() : static_cast<u32>(value.asInt());
}

PagedList ListOf(IpodManager& manager, const BrowseLevel& level) {
    return {static_cast<i32>(level.itemCount), [&manager, &level](i32 start, i32& count) {
                return manager.GetItems(level.parent, level, start, count);
            }};
}

using JumpFunction = i32 (*)(const PagedList& list, i32 start);

i32 Jump(IpodManager& manager, const Json::Value& params, JumpFunction jump, i32 notBrowsing) {
    const BrowseLevel* const level = manager.CurrentBrowseLevel();
    if (level == nullptr) {
        std::puts("Not Browsing");
        std::fflush(stdout);
        return notBrowsing;
    }
    return jump(ListOf(manager, *level), params["startIndex"].asInt());
}

}  // namespace

bool CIpodRequestHandler::GetBrowseList(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    const BrowseLevel* const level = m_manager->CurrentBrowseLevel();
    i32 start = 0;
    u32 total = 0;
    Json::Value list;
    if (level == nullptr) {
        list = TopCategoryList(m_manager->GetTopCategories());
    } else {
        const Json::Value& params = request["params"];
        start = params["startIndex"].asInt();
        i32 count = params["itemCount"].asInt();
        if (IpodManager::HasFilter(*level)) {
            total = static_cast<u32>(level->filterMatches.size());
            list = FilteredList(level->filterMatches, start, count);
        } else {
            total = level->itemCount;
            const BrowseItemArray items = m_manager->GetItems(level->parent, *level, start, count);
            list = ItemList(items.get(), static_cast<u32>(count));
        }
    }
    Json::Value& result = response["result"];
    result["isRootCategory"] = level == nullptr;
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
    const bool atRoot = m_manager->CurrentBrowseLevel() == nullptr;
    const i32 outcome = atRoot ? m_manager->BrowseTopCategory(id) : m_manager->BrowseInto(id);
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
    const std::string text = params["searchText"].asString();
    if (BrowseLevel* const level = m_manager->CurrentBrowseLevel()) {
        m_manager->FetchLevelItems(*level);
    }
    response["result"] = StatusWord(m_manager->SetItemFilter(text) == 0);
    return true;
}

bool CIpodRequestHandler::ResetBrowseList(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    response["result"]["resetSuccess"] = m_manager->ResetDatabase() == 0;
    return true;
}

bool CIpodRequestHandler::GetSongList(const Json::Value& request, Json::Value& response) {
    BeginResponse(request, response);
    if (m_manager->CurrentBrowseLevel() != nullptr) {
        return true;
    }
    m_manager->BrowseTopCategory(DEV_MGR_CATEGORY_TRACK);
    BrowseLevel* const songs = m_manager->CurrentBrowseLevel();
    if (songs == nullptr || songs->itemCount == 0) {
        return true;
    }
    m_manager->FetchLevelItems(*songs);
    Json::Value& result = response["result"];
    result["isRootCategory"] = false;
    result["isLastCategory"] = m_manager->IsAtLeafCategory();
    result["categoryItems"] = ItemList(songs->items.get(), songs->storedCount);
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
