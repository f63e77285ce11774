#include "IpodService/ItemListText.h"

#include <json/writer.h>

#include "IpodService/RecordText.h"
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

void AppendIdAndName(std::string& list, u32 id, const std::string& name) {
    list.append("\"itemId\":").append(std::to_string(id));
    list.append(",\"itemName\":").append(Json::valueToQuotedString(name.c_str())).append("}");
}

}  // namespace

void ItemListText::Append(std::string& list, const BrowseItem& item) {
    BeginElement(list);
    list += '{';
    AppendIdAndName(list, item.id, WellFormedUtf8(RecordText(item.name), sizeof item.name));
}

void ItemListText::Append(std::string& list, const TopCategoryEntry& entry) {
    BeginElement(list);
    list.append("{\"isSupported\":").append(entry.supported != 0 ? "true," : "false,");
    AppendIdAndName(list, entry.category, CategoryLabel(entry.category));
}
