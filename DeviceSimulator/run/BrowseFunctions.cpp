// The C functions for the database and for browsing.
//
// A list of a large library may take a while to make, so none is made under the model's lock.
#include "DeviceManager/DeviceManager.h"

#include <algorithm>
#include <optional>

#include "DeviceSimulator/device/BrowseSession.h"
#include "DeviceSimulator/device/FieldText.h"
#include "DeviceSimulator/run/Gate.h"

namespace DeviceSimulator::Answers {

namespace {

/// A session as it stands, whose it is, and the library once that has been asked for.
struct Browsing {
    BrowseSession session;
    Character character;
    std::shared_ptr<const Library> library;
};

DevMgrResult Look(Engine& engine, u32 ph, u32 dh, Browsing& browsing) {
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint) {
        BrowseSession* session = nullptr;
        const DevMgrResult found = model.FindSession(ph, dh, session);
        if (found == DEV_MGR_SUCCESS) {
            browsing.session = *session;
            browsing.character = model.Find(dh)->character;
        }
        return found;
    });
}

/// May wait for as long as music is read.
void FetchLibrary(Engine& engine, Browsing& browsing) {
    browsing.library = engine.Music(browsing.character.music)->Get();
}

/// What a query asks for.
struct Query {
    i32 parentCategory;
    u32 parentIndex;
    u32 category;
};

/// The list that a query means. `out`: what its answer is to go to.
DevMgrResult FindItems(Engine& engine, u32 ph, u32 dh, const Query& query, const u32* out, Browsing& browsing,
                       std::shared_ptr<const ItemList>& items) {
    DevMgrResult result = Look(engine, ph, dh, browsing);
    if (result != DEV_MGR_SUCCESS || !IsBrowsable(query.category)) {
        return result != DEV_MGR_SUCCESS ? result : DEV_MGR_INVALID_CATEGORY_SELECTION;
    }
    FetchLibrary(engine, browsing);
    const u32 position = ParentPosition(browsing.character.ids, *browsing.library, browsing.session.Path(),
                                        static_cast<u32>(query.parentCategory), query.parentIndex);
    std::vector<PathStep> path;
    result = browsing.session.ParentPath(query.parentCategory, position, path);
    if (result == DEV_MGR_SUCCESS && out == nullptr) {
        return DEV_MGR_WRONG_PARAMS;
    }
    if (result == DEV_MGR_SUCCESS) {
        items = ItemsBelow(*browsing.library, path, query.category);
    }
    return result;
}

/// None when the path has changed meanwhile.
std::optional<DevMgrResult> SelectOnce(Engine& engine, u32 ph, u32 dh, u32 category, u32 id) {
    Browsing browsing;
    const DevMgrResult looked = Look(engine, ph, dh, browsing);
    if (looked != DEV_MGR_SUCCESS || !IsBrowsable(category)) {
        return looked != DEV_MGR_SUCCESS ? looked : DEV_MGR_INVALID_CATEGORY_SELECTION;
    }
    FetchLibrary(engine, browsing);
    const auto items = ItemsBelow(*browsing.library, browsing.session.Path(), category);
    const auto position = PositionOf(browsing.character.ids, *items, id);
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) -> std::optional<DevMgrResult> {
        BrowseSession* session = nullptr;
        const DevMgrResult result = model.FindSession(ph, dh, session);
        if (result == DEV_MGR_SUCCESS && session->Path() != browsing.session.Path()) {
            return std::nullopt;
        }
        if (result != DEV_MGR_SUCCESS || !position) {
            return result != DEV_MGR_SUCCESS ? result : DEV_MGR_IAP_INVALID_INDEX;
        }
        if (category != DEV_MGR_CATEGORY_TRACK) {
            return session->Narrow({category, *position});
        }
        model.Find(dh)->player.Start(browsing.library, items, *position, now);
        return DEV_MGR_SUCCESS;
    });
}

/// `work`(session).
template <typename Work>
DevMgrResult InSession(ManagerModel& model, u32 ph, u32 dh, Work work) {
    BrowseSession* session = nullptr;
    const DevMgrResult result = model.FindSession(ph, dh, session);
    return result == DEV_MGR_SUCCESS ? work(*session) : result;
}

u32 eDevMgriPodStartBuildingDatabase(Engine& engine, u32 ph, u32 dh, char*) {
    // That of the device; of what is none the environment's, and the model says what is wrong.
    const MusicChoice choice = engine.Loop().Locked([&](ManagerModel& model, TimePoint) {
        Device* device = nullptr;
        model.FindPlayer(ph, dh, device);
        return device != nullptr ? device->character.music : MusicChoice{};
    });
    auto progress = engine.Music(choice)->Progress();
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) {
        return model.StartDatabase(ph, dh, std::move(progress), now);
    });
}

u32 eDevMgriPodOpenMdBrowseSession(ManagerModel& model, TimePoint, u32 ph, u32 dh, u32) {
    return model.OpenSession(ph, dh);
}

u32 eDevMgriPodResetDatabase(ManagerModel& model, TimePoint, u32 ph, u32 dh) {
    return InSession(model, ph, dh, [](BrowseSession& session) {
        session.Reset();
        return DEV_MGR_SUCCESS;
    });
}

u32 eDevMgriPodCloseMdBrowseSession(ManagerModel& model, TimePoint, u32 ph, u32 dh) {
    return model.CloseSession(ph, dh);
}

u32 eDevMgriPodBrowseOneLevelBack(ManagerModel& model, TimePoint, u32 ph, u32 dh) {
    return InSession(model, ph, dh, [](BrowseSession& session) { return session.Back(); });
}

u32 eDevMgriPodMdGetCategories(Engine& engine, u32 ph, u32 dh, u32 category, u32* mask) {
    Browsing browsing;
    const DevMgrResult result = Look(engine, ph, dh, browsing);
    if (result != DEV_MGR_SUCCESS || mask == nullptr) {
        return result != DEV_MGR_SUCCESS ? result : DEV_MGR_WRONG_PARAMS;
    }
    FetchLibrary(engine, browsing);
    return CategoriesBehind(*browsing.library, category, *mask);
}

u32 eDevMgriPodGetNumItems(Engine& engine, u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category,
                           u32* count) {
    Browsing browsing;
    std::shared_ptr<const ItemList> list;
    const Query query{parentCategory, parentIndex, category};
    const DevMgrResult result = FindItems(engine, ph, dh, query, count, browsing, list);
    if (result == DEV_MGR_SUCCESS) {
        *count = static_cast<u32>(list->size());
    }
    return result;
}

u32 eDevMgriPodGetItems(Engine& engine, u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category,
                        u32 start, InOut<u32> count, BrowseItem* items) {
    Browsing browsing;
    std::shared_ptr<const ItemList> list;
    const Query query{parentCategory, parentIndex, category};
    const DevMgrResult result = FindItems(engine, ph, dh, query, count.pointer, browsing, list);
    if (result != DEV_MGR_SUCCESS) {
        return result;
    }
    if (start > list->size() || (start == list->size() && start > 0)) {
        return DEV_MGR_IAP_INVALID_INDEX;
    }
    if (items == nullptr && *count > 0) {
        return DEV_MGR_WRONG_PARAMS;
    }
    *count = std::min(*count, static_cast<u32>(list->size()) - start);
    if (browsing.character.pageLimit != 0) {
        *count = std::min(*count, browsing.character.pageLimit);
    }
    for (u32 i = 0; i < *count; ++i) {
        const u32 entry = (*list)[start + i];
        CopyText(items[i].name, browsing.library->ItemName(category, entry));
        items[i].id = IdOf(browsing.character.ids, entry, start + i);
    }
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodSelectCategorizedIndex(Engine& engine, u32 ph, u32 dh, u32 category, u32 index) {
    for (;;) {
        if (const auto result = SelectOnce(engine, ph, dh, category, index)) {
            return *result;
        }
    }
}

}  // namespace

}  // namespace DeviceSimulator::Answers

DEVICE_MANAGER_BROWSE_FUNCTIONS(DEVICE_SIMULATOR_FUNCTION)
