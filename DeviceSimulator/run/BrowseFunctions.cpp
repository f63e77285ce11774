// The C functions for the database and for browsing.
//
// A list of a large library may take a while to make, so none is made under the model's lock.
#include "DeviceManager/DeviceManager.h"

#include <algorithm>
#include <optional>

#include "DeviceSimulator/device/BrowseSession.h"
#include "DeviceSimulator/device/FieldText.h"
#include "DeviceSimulator/run/Gate.h"
#include "DeviceSimulator/run/PlayOn.h"

using namespace DeviceSimulator;

namespace {

/// `work`(session) under the model's lock.
template <typename Work>
DevMgrResult InSession(Engine& engine, u32 ph, u32 dh, Work work) {
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint) {
        BrowseSession* session = nullptr;
        const DevMgrResult result = model.FindSession(ph, dh, session);
        return result == DEV_MGR_SUCCESS ? work(*session) : result;
    });
}

struct Parent {
    i32 category;
    u32 index;
};

/// A session as it stands, and whose it is: what is made of it is made without the model's lock.
struct Browsing {
    BrowseSession session;
    Character character;
};

DevMgrResult Look(Engine& engine, u32 ph, u32 dh, Browsing& browsing) {
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint) {
        BrowseSession* session = nullptr;
        const DevMgrResult result = model.FindSession(ph, dh, session);
        if (result == DEV_MGR_SUCCESS) {
            browsing = {*session, model.Find(dh)->character};
        }
        return result;
    });
}

std::shared_ptr<const Library> LibraryOf(Engine& engine, const Browsing& browsing) {
    return engine.Music(browsing.character.music)->Get();
}

/// The path that a query means.
DevMgrResult FindPath(const Library& library, const Browsing& browsing, Parent parent,
                      std::vector<PathStep>& path) {
    const BrowseSession& session = browsing.session;
    const u32 position = ParentPosition(browsing.character.ids, library, session.Path(),
                                        static_cast<u32>(parent.category), parent.index);
    return session.ParentPath(parent.category, position, path);
}

/// `work`(library, character, list) on the list that a query means; `count` is the query's own out argument.
template <typename Work>
DevMgrResult WithItems(Engine& engine, u32 ph, u32 dh, Parent parent, u32 category, const u32* count,
                       Work work) {
    Browsing browsing;
    DevMgrResult result = Look(engine, ph, dh, browsing);
    if (result != DEV_MGR_SUCCESS || !IsBrowsable(category)) {
        return result != DEV_MGR_SUCCESS ? result : DEV_MGR_INVALID_CATEGORY_SELECTION;
    }
    const auto library = LibraryOf(engine, browsing);
    std::vector<PathStep> path;
    result = FindPath(*library, browsing, parent, path);
    if (result != DEV_MGR_SUCCESS) {
        return result;
    }
    return count == nullptr ? DEV_MGR_WRONG_PARAMS
                            : work(*library, browsing.character, *ItemsBelow(*library, path, category));
}

/// None when the path has changed meanwhile.
std::optional<DevMgrResult> SelectOnce(Engine& engine, u32 ph, u32 dh, u32 category, u32 id) {
    Browsing browsing;
    const DevMgrResult looked = Look(engine, ph, dh, browsing);
    if (looked != DEV_MGR_SUCCESS || !IsBrowsable(category)) {
        return looked != DEV_MGR_SUCCESS ? looked : DEV_MGR_INVALID_CATEGORY_SELECTION;
    }
    const auto library = LibraryOf(engine, browsing);
    const auto items = ItemsBelow(*library, browsing.session.Path(), category);
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
        model.Find(dh)->player.Start(library, items, *position, now);
        return DEV_MGR_SUCCESS;
    });
}

DevMgrResult Select(Engine& engine, u32 ph, u32 dh, u32 category, u32 id) {
    for (;;) {
        if (const auto result = SelectOnce(engine, ph, dh, category, id)) {
            return *result;
        }
    }
}

DevMgrResult CopyItems(const Library& library, const Character& character, u32 category, const ItemList& list,
                       u32 start, u32& count, BrowseItem* items) {
    if (start > list.size() || (start == list.size() && start > 0)) {
        return DEV_MGR_IAP_INVALID_INDEX;
    }
    if (items == nullptr && count > 0) {
        return DEV_MGR_WRONG_PARAMS;
    }
    count = std::min(count, static_cast<u32>(list.size()) - start);
    if (character.pageLimit != 0) {
        count = std::min(count, character.pageLimit);
    }
    for (u32 i = 0; i < count; ++i) {
        CopyText(items[i].name, library.ItemName(category, list[start + i]));
        items[i].id = IdOf(character.ids, list[start + i], start + i);
    }
    return DEV_MGR_SUCCESS;
}

}  // namespace

u32 eDevMgriPodStartBuildingDatabase(u32 ph, u32 dh, char* path) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodStartBuildingDatabase),
        [&](Engine& engine) {
            auto progress = engine.Music(ChoiceOf(engine, ph, dh))->Progress();
            return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) {
                return model.StartDatabase(ph, dh, std::move(progress), now);
            });
        },
        ph, dh, path);
}

u32 eDevMgriPodOpenMdBrowseSession(u32 ph, u32 dh, u32 mode) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodOpenMdBrowseSession),
        [&](Engine& engine) {
            return engine.Loop().Locked(
                [&](ManagerModel& model, TimePoint) { return model.OpenSession(ph, dh); });
        },
        ph, dh, mode);
}

u32 eDevMgriPodResetDatabase(u32 ph, u32 dh) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodResetDatabase),
        [&](Engine& engine) {
            return InSession(engine, ph, dh, [](BrowseSession& session) {
                session.Reset();
                return DEV_MGR_SUCCESS;
            });
        },
        ph, dh);
}

u32 eDevMgriPodCloseMdBrowseSession(u32 ph, u32 dh) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodCloseMdBrowseSession),
        [&](Engine& engine) {
            return engine.Loop().Locked(
                [&](ManagerModel& model, TimePoint) { return model.CloseSession(ph, dh); });
        },
        ph, dh);
}

u32 eDevMgriPodBrowseOneLevelBack(u32 ph, u32 dh) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodBrowseOneLevelBack),
        [&](Engine& engine) {
            return InSession(engine, ph, dh, [](BrowseSession& session) { return session.Back(); });
        },
        ph, dh);
}

u32 eDevMgriPodMdGetCategories(u32 ph, u32 dh, u32 category, u32* mask) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodMdGetCategories),
        [&](Engine& engine) -> u32 {
            Browsing browsing;
            const DevMgrResult result = Look(engine, ph, dh, browsing);
            if (result != DEV_MGR_SUCCESS) {
                return result;
            }
            return mask == nullptr ? DEV_MGR_WRONG_PARAMS
                                   : CategoriesBehind(*LibraryOf(engine, browsing), category, *mask);
        },
        ph, dh, category, mask);
}

u32 eDevMgriPodGetNumItems(u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category, u32* count) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetNumItems),
        [&](Engine& engine) {
            return WithItems(engine, ph, dh, {parentCategory, parentIndex}, category, count,
                             [&](const Library&, const Character&, const ItemList& list) {
                                 *count = static_cast<u32>(list.size());
                                 return DEV_MGR_SUCCESS;
                             });
        },
        ph, dh, parentCategory, parentIndex, category, count);
}

u32 eDevMgriPodGetItems(u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category, u32 start,
                        u32* count, BrowseItem* items) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetItems),
        [&](Engine& engine) {
            return WithItems(engine, ph, dh, {parentCategory, parentIndex}, category, count,
                             [&](const Library& library, const Character& character, const ItemList& list) {
                                 return CopyItems(library, character, category, list, start, *count, items);
                             });
        },
        ph, dh, parentCategory, parentIndex, category, start, InOut<u32>{count}, items);
}

u32 eDevMgriPodSelectCategorizedIndex(u32 ph, u32 dh, u32 category, u32 index) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodSelectCategorizedIndex),
        [&](Engine& engine) { return Select(engine, ph, dh, category, index); }, ph, dh, category, index);
}
