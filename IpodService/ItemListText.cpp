#include "IpodService/ItemListText.h"

#include "IpodService/RecordText.h"
#include "JsonRpc/ObjectText.h"
#include "ServiceUtil/Utf8.h"

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
        default:
            return "Unknown";
    }
}

void BeginElement(std::string& list) {
    if (list.back() != '[') {
        list += ',';
    }
}

}  // namespace

void ItemListText::Append(std::string& list, const BrowseItem& item) {
    BeginElement(list);
    Json::Rpc::ObjectText(list)
        .Add("itemId", item.id)
        .Add("itemName", WellFormedUtf8(RecordText(item.name), sizeof item.name))
        .End();
}

void ItemListText::Append(std::string& list, const TopCategoryEntry& entry) {
    BeginElement(list);
    Json::Rpc::ObjectText(list)
        .Add("isSupported", entry.supported != 0)
        .Add("itemId", entry.category)
        .Add("itemName", std::string(CategoryLabel(entry.category)))
        .End();
}
