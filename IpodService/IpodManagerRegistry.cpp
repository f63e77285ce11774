#include "IpodService/IpodManagerRegistry.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "IpodService/IpodManager.h"

namespace {

struct Registry {
    std::mutex mutex;
    std::condition_variable eventHandled;
    std::vector<IpodManager*> managers;
    std::vector<IpodManager*> handling;  ///< a manager for each event of it that is being handled now
};

// Never destroyed: exit() may run destructors while a callback is still under way.
Registry& TheRegistry() {
    static auto& registry = *new Registry;
    return registry;
}

// The managers as they stand, each marked as handling an event so that it stays alive.
std::vector<IpodManager*> BeginHandling() {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.handling.insert(registry.handling.end(), registry.managers.begin(), registry.managers.end());
    return registry.managers;
}

void EndHandling(const std::vector<IpodManager*>& managers) {
    Registry& registry = TheRegistry();
    {
        const std::lock_guard lock(registry.mutex);
        for (IpodManager* manager : managers) {
            registry.handling.erase(std::find(registry.handling.begin(), registry.handling.end(), manager));
        }
    }
    registry.eventHandled.notify_all();
}

}  // namespace

void IpodManagerRegistry::Add(IpodManager* manager) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.managers.push_back(manager);
}

void IpodManagerRegistry::Remove(IpodManager* manager) {
    Registry& registry = TheRegistry();
    std::unique_lock lock(registry.mutex);
    std::erase(registry.managers, manager);
    registry.eventHandled.wait(lock, [&] {
        return std::find(registry.handling.begin(), registry.handling.end(), manager) ==
               registry.handling.end();
    });
}

void IpodManagerRegistry::DeviceManagerCallback(const DeviceEvent* event, u32 processHandle) {
    if (event == nullptr) {
        return;
    }
    try {
        const std::vector<IpodManager*> managers = BeginHandling();
        for (IpodManager* manager : managers) {
            if (manager == nullptr || manager->ProcessHandle() != processHandle) {
                LOG_WARN("non-matching ipod manager found!\n");
                continue;
            }
            try {
                manager->OnDeviceManagerEvent(*event);
            } catch (...) {
                // Out of memory, at worst: the event is lost, the other managers still get theirs.
            }
        }
        EndHandling(managers);
    } catch (...) {
        // The caller is C code: nothing may pass.
    }
}
