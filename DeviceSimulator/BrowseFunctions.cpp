// The C functions for the database and for browsing.
//
// A list of a large library may take a while to make, so none is made under the model's lock.
#include "DeviceSimulator/Exports.h"

#include <algorithm>

#include "DeviceSimulator/Gate.h"
#include "DeviceSimulator/Text.h"

using namespace DeviceSimulator;

namespace {

/// `work`(session) under the model's lock.
template <typename Work>
DevMgrResult InSession(Engine& engine, u32 ph, u32 dh, Work work) {
    return engine.Loop().Locked([&](Model& model, TimePoint) {
        BrowseSession* session = nullptr;
        const DevMgrResult result = model.FindSession(ph, dh, session);
        return result == DEV_MGR_SUCCESS ? work(*session) : result;
    });
}

struct Parent {
    i32 category;
    u32 index;
};

/// `work`(list) on the list that a query means; `count` is the query's own out argument.
template <typename Work>
DevMgrResult WithItems(Engine& engine, u32 ph, u32 dh, Parent parent, u32 category, const u32* count,
                       Work work) {
    std::vector<PathStep> path;
    const DevMgrResult result = InSession(engine, ph, dh, [&](const BrowseSession& session) {
        return IsBrowsable(category) ? session.ParentPath(parent.category, parent.index, path)
                                     : DEV_MGR_INVALID_CATEGORY_SELECTION;
    });
    if (result != DEV_MGR_SUCCESS) {
        return result;
    }
    return count == nullptr ? DEV_MGR_WRONG_PARAMS : work(*ItemsBelow(*engine.Music().Get(), path, category));
}

DevMgrResult SelectOnce(Engine& engine, u32 ph, u32 dh, PathStep step, const std::vector<PathStep>& path,
                        bool& isPathAsItWas) {
    const auto library = engine.Music().Get();
    const auto items = ItemsBelow(*library, path, step.category);
    return engine.Loop().Locked([&](Model& model, TimePoint now) {
        BrowseSession* session = nullptr;
        const DevMgrResult result = model.FindSession(ph, dh, session);
        if (result != DEV_MGR_SUCCESS) {
            return result;
        }
        isPathAsItWas = session->Path() == path;
        if (!isPathAsItWas) {
            return DEV_MGR_SUCCESS;
        }
        if (step.position >= items->size()) {
            return DEV_MGR_IAP_INVALID_INDEX;
        }
        if (step.category != DEV_MGR_CATEGORY_TRACK) {
            return session->Narrow(step);
        }
        Device* device = nullptr;
        const DevMgrResult found = model.FindPlayer(ph, dh, device);
        if (found == DEV_MGR_SUCCESS) {
            device->player.Start(library, items, step.position, now);
        }
        return found;
    });
}

DevMgrResult Select(Engine& engine, u32 ph, u32 dh, PathStep step) {
    for (;;) {
        std::vector<PathStep> path;
        DevMgrResult result = InSession(engine, ph, dh, [&](const BrowseSession& session) {
            path = session.Path();
            return IsBrowsable(step.category) ? DEV_MGR_SUCCESS : DEV_MGR_INVALID_CATEGORY_SELECTION;
        });
        bool isPathAsItWas = true;
        if (result == DEV_MGR_SUCCESS) {
            result = SelectOnce(engine, ph, dh, step, path, isPathAsItWas);
        }
        if (isPathAsItWas) {
            return result;
        }
    }
}

DevMgrResult CopyItems(const Library& library, u32 category, const ItemList& list, u32 start, u32& count,
                       BrowseItem* items) {
    if (start > list.size() || (start == list.size() && start > 0)) {
        return DEV_MGR_IAP_INVALID_INDEX;
    }
    if (items == nullptr && count > 0) {
        return DEV_MGR_WRONG_PARAMS;
    }
    count = std::min(count, static_cast<u32>(list.size()) - start);
    for (u32 i = 0; i < count; ++i) {
        CopyText(items[i].name, library.ItemName(category, list[start + i]));
        items[i].id = start + i;
    }
    return DEV_MGR_SUCCESS;
}

}  // namespace

u32 eDevMgriPodStartBuildingDatabase(u32 ph, u32 dh, char* path) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodStartBuildingDatabase),
        [&](Engine& engine) {
            auto progress = engine.Music().Progress();
            return engine.Loop().Locked([&](Model& model, TimePoint now) {
                return model.StartDatabase(ph, dh, std::move(progress), now);
            });
        },
        ph, dh, path);
}

u32 eDevMgriPodOpenMdBrowseSession(u32 ph, u32 dh, u32 mode) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodOpenMdBrowseSession),
        [&](Engine& engine) {
            return engine.Loop().Locked([&](Model& model, TimePoint) { return model.OpenSession(ph, dh); });
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
            return engine.Loop().Locked([&](Model& model, TimePoint) { return model.CloseSession(ph, dh); });
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
            const DevMgrResult result =
                InSession(engine, ph, dh, [](const BrowseSession&) { return DEV_MGR_SUCCESS; });
            if (result != DEV_MGR_SUCCESS) {
                return result;
            }
            return mask == nullptr ? DEV_MGR_WRONG_PARAMS
                                   : CategoriesBehind(*engine.Music().Get(), category, *mask);
        },
        ph, dh, category, mask);
}

u32 eDevMgriPodGetNumItems(u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category, u32* count) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetNumItems),
        [&](Engine& engine) {
            return WithItems(engine, ph, dh, {parentCategory, parentIndex}, category, count,
                             [&](const ItemList& list) {
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
                             [&](const ItemList& list) {
                                 const auto library = engine.Music().Get();
                                 return CopyItems(*library, category, list, start, *count, items);
                             });
        },
        ph, dh, parentCategory, parentIndex, category, start, InOut<u32>{count}, items);
}

u32 eDevMgriPodSelectCategorizedIndex(u32 ph, u32 dh, u32 category, u32 index) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodSelectCategorizedIndex),
        [&](Engine& engine) {
            return Select(engine, ph, dh, {category, index});
        },
        ph, dh, category, index);
}
