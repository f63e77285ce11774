// Lists of items as JSON text: a list may hold a hundred thousand, and a tree of values takes many times the
// text.
#pragma once

#include <string>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/BrowseStack.h"

namespace ItemListText {

// Each appends one element to a list that begins in `list` with '['; names are mended to well-formed UTF-8.

/// {"itemId", "itemName"}
void Append(std::string& list, const BrowseItem& item);
/// {"isSupported", "itemId", "itemName"}, with the category's label.
void Append(std::string& list, const TopCategoryEntry& entry);

}  // namespace ItemListText
