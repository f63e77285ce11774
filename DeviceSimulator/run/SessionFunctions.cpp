// The C functions for processes, their memory and the devices.
#include "DeviceManager/DeviceManager.h"

#include <algorithm>

#include "DeviceSimulator/device/FieldText.h"
#include "DeviceSimulator/run/Gate.h"
#include "DeviceSimulator/run/Sessions.h"
#include "DeviceSimulator/wire/LowMemory.h"

using namespace DeviceSimulator;

namespace {

/// Of a process that is this one.
class CallbackListener : public EventListener {
  public:
    explicit CallbackListener(DeviceEventCallback callback) : m_callback(callback) {}
    void OnEvent(const DeviceEvent& event, u32 process) override { m_callback(&event, process); }

  private:
    const DeviceEventCallback m_callback;
};

}  // namespace

u32 DeviceSimulator::RegisterProcess(u32* ph, DeviceEventCallback callback,
                                     std::shared_ptr<EventListener> listener) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgrRegisterProcess),
        [&](Engine& engine) -> u32 {
            if (ph == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            if (callback == nullptr) {
                listener = nullptr;
            }
            engine.Music()->Prepare();
            return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) {
                return model.Register(std::move(listener), *ph, now);
            });
        },
        ph, callback);
}

u32 eDevMgrDeRegisterProcess(u32 ph) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgrDeRegisterProcess),
        [&](Engine& engine) { return engine.Loop().Deregister(ph); }, ph);
}

u32 eDevMgrRegisterProcess(u32* ph, DeviceEventCallback callback) {
    return RegisterProcess(ph, callback, std::make_shared<CallbackListener>(callback));
}

u32 DeviceSimulator::AllocateMemory(u32 ph, u32* size, u32* block, const MapBlock& map) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgrAllocateSharedMemory),
        [&](Engine& engine) -> u32 {
            return engine.Loop().Locked([&](ManagerModel& model, TimePoint) -> DevMgrResult {
                if (!model.Processes().Contains(ph)) {
                    return DEV_MGR_PROCESS_NOT_REGISTERED;
                }
                if (size == nullptr || block == nullptr) {
                    return DEV_MGR_WRONG_PARAMS;
                }
                const u32 granted = std::min(*size, engine.Scripts().LargestBlock());
                const DevMgrResult result = model.AllocateMemory(ph, granted, map, *block);
                *size = result == DEV_MGR_SUCCESS ? granted : *size;
                return result;
            });
        },
        ph, InOut<u32>{size}, block);
}

u32 eDevMgrAllocateSharedMemory(u32 ph, u32* size, u32* block) {
    return AllocateMemory(ph, size, block, [](u32 wanted) -> std::optional<MappedBlock> {
        auto memory = std::make_shared<LowMemory>(wanted);
        if (!memory->Fill(-1)) {
            return std::nullopt;
        }
        return MappedBlock{memory->Address(), {memory->Start(), wanted}, memory};
    });
}

u32 eDevMgrDeAllocateSharedMemory(u32 ph, u32 block) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgrDeAllocateSharedMemory),
        [&](Engine& engine) {
            return engine.Loop().Locked(
                [&](ManagerModel& model, TimePoint) { return model.FreeMemory(ph, block); });
        },
        ph, block);
}

u32 eDevMgrGetNumDevices(u32 ph, u32* count) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgrGetNumDevices),
        [&](Engine& engine) {
            return engine.Loop().Locked([&](ManagerModel& model, TimePoint) -> DevMgrResult {
                if (!model.Processes().Contains(ph)) {
                    return DEV_MGR_PROCESS_NOT_REGISTERED;
                }
                if (count == nullptr) {
                    return DEV_MGR_WRONG_PARAMS;
                }
                *count = static_cast<u32>(model.Listed().size());
                return DEV_MGR_SUCCESS;
            });
        },
        ph, count);
}

u32 eDevMgrGetDeviceList(u32 ph, DeviceRecord* list, u32 reserved, u32* count) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgrGetDeviceList),
        [&](Engine& engine) {
            return engine.Loop().Locked([&](ManagerModel& model, TimePoint) -> DevMgrResult {
                if (!model.Processes().Contains(ph)) {
                    return DEV_MGR_PROCESS_NOT_REGISTERED;
                }
                if (count == nullptr || reserved != 0 || (list == nullptr && *count > 0)) {
                    return DEV_MGR_WRONG_PARAMS;
                }
                const auto devices = model.Listed();
                *count = std::min(*count, static_cast<u32>(devices.size()));
                std::transform(devices.begin(), devices.begin() + *count, list,
                               [](const Device* device) { return MakeRecord(device->identity); });
                return DEV_MGR_SUCCESS;
            });
        },
        ph, list, reserved, InOut<u32>{count});
}

u32 eDevMgrOpenDevice(u32 ph, u32 dh) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgrOpenDevice),
        [&](Engine& engine) {
            return engine.Loop().Locked([&](ManagerModel& model, TimePoint) { return model.Open(ph, dh); });
        },
        ph, dh);
}

u32 eDevMgrCloseDevice(u32 ph, u32 dh) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgrCloseDevice),
        [&](Engine& engine) {
            return engine.Loop().Locked(
                [&](ManagerModel& model, TimePoint now) { return model.Close(ph, dh, now); });
        },
        ph, dh);
}

u32 eDevMgrGetiPodInfo(u32 ph, u32 dh, IpodInfo* info) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgrGetiPodInfo),
        [&](const Device& device, TimePoint) {
            if (info == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            *info = IpodInfo{};
            CopyText(info->name, device.identity.name);
            info->major = 7;
            info->minor = 1;
            info->revision = 2;
            CopyText(info->serial, device.identity.serial);
            CopyText(info->model, "SIM100");
            return DEV_MGR_SUCCESS;
        },
        ph, dh, info);
}
