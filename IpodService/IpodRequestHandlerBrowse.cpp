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

const char* JsonBool(bool value) {
    return value ? "true" : "false";
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

bool CIpodRequestHandler::GetBrowseList(const Json::Value& request, std::string& result) {
    const bool isRoot = !m_manager->IsBrowsing();
    i32 start = 0;
    u32 total = 0;
    result = "{\"categoryItems\":[";
    if (isRoot) {
        for (const TopCategoryEntry& entry : m_manager->GetTopCategories()) {
            ItemListText::Append(result, entry);
        }
    } else {
        const Json::Value& params = request["params"];
        start = params["startIndex"].asInt();
        total = m_manager->ListItems(start, params["itemCount"].asInt(), [&result](const BrowseItem& item) {
            ItemListText::Append(result, item);
        });
    }
    result.append("],\"currIndex\":").append(std::to_string(start));
    result.append(",\"isLastCategory\":").append(JsonBool(m_manager->IsAtLeafCategory()));
    result.append(",\"isRootCategory\":").append(JsonBool(isRoot));
    result.append(",\"totalCount\":").append(std::to_string(static_cast<i32>(total))).append("}");
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

bool CIpodRequestHandler::GetSongList(const Json::Value&, std::string& result) {
    if (m_manager->IsBrowsing()) {
        return true;
    }
    m_manager->BrowseTopCategory(DEV_MGR_CATEGORY_TRACK);
    std::string list = "{\"categoryItems\":[";
    if (!m_manager->ListAllItems([&list](const BrowseItem& item) { ItemListText::Append(list, item); })) {
        return true;
    }
    list.append("],\"isLastCategory\":").append(JsonBool(m_manager->IsAtLeafCategory()));
    result = std::move(list.append(",\"isRootCategory\":false}"));
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
