// The C functions for processes, their memory, the devices and what is set on them.
#include "DeviceManager/DeviceManager.h"

#include <algorithm>
#include <cstring>

#include "DeviceSimulator/device/FieldText.h"
#include "DeviceSimulator/run/Gate.h"
#include "DeviceSimulator/run/RemoteClient.h"
#include "DeviceSimulator/wire/LowMemory.h"

namespace DeviceSimulator::Answers {

namespace {

/// Of a process that is this one.
class CallbackListener : public EventListener {
  public:
    explicit CallbackListener(DeviceEventCallback callback) : m_callback(callback) {}
    void OnEvent(const DeviceEvent& event, u32 process) override { m_callback(&event, process); }

  private:
    const DeviceEventCallback m_callback;
};

std::optional<MappedBlock> MapHere(u32 size) {
    auto memory = std::make_shared<LowMemory>(size);
    if (!memory->Fill(-1)) {
        return std::nullopt;
    }
    return MappedBlock{memory->Address(), {memory->Start(), size}, memory};
}

u32 eDevMgrRegisterProcess(Engine& engine, u32* ph, DeviceEventCallback callback) {
    if (ph == nullptr || callback == nullptr) {
        return DEV_MGR_WRONG_PARAMS;
    }
    engine.Music();
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) {
        RemoteCall* const remote = RemoteCall::Current();
        return remote != nullptr ? remote->client.Register(model, *ph, now)
                                 : model.Register(std::make_shared<CallbackListener>(callback), *ph, now);
    });
}

u32 eDevMgrDeRegisterProcess(Engine& engine, u32 ph) {
    return engine.Loop().Deregister(ph);
}

u32 eDevMgrAllocateSharedMemory(ManagerModel& model, TimePoint, u32 ph, InOut<u32> size, u32& block) {
    const u32 granted = std::min(*size, Engine::Instance().Scripts().LargestBlock());
    const auto map = [&](u32 wanted) {
        RemoteCall* const remote = RemoteCall::Current();
        return remote != nullptr ? remote->MapShared(wanted, block) : MapHere(wanted);
    };
    const DevMgrResult result = model.AllocateMemory(ph, granted, map, block);
    *size = result == DEV_MGR_SUCCESS ? granted : *size;
    return result;
}

u32 eDevMgrDeAllocateSharedMemory(ManagerModel& model, TimePoint, u32 ph, u32 block) {
    return model.FreeMemory(ph, block);
}

u32 eDevMgrGetNumDevices(ManagerModel& model, TimePoint, u32, u32& count) {
    count = static_cast<u32>(model.Listed().size());
    return DEV_MGR_SUCCESS;
}

u32 eDevMgrGetDeviceList(ManagerModel& model, TimePoint, u32, DeviceRecord* list, u32 reserved,
                         InOut<u32> count) {
    if (reserved != 0 || (list == nullptr && *count > 0)) {
        return DEV_MGR_WRONG_PARAMS;
    }
    const auto devices = model.Listed();
    *count = std::min(*count, static_cast<u32>(devices.size()));
    std::transform(devices.data(), devices.data() + *count, list,
                   [](const Device* device) { return MakeRecord(device->identity); });
    return DEV_MGR_SUCCESS;
}

u32 eDevMgrOpenDevice(ManagerModel& model, TimePoint, u32 ph, u32 dh) {
    return model.Open(ph, dh);
}

u32 eDevMgrCloseDevice(ManagerModel& model, TimePoint now, u32 ph, u32 dh) {
    return model.Close(ph, dh, now);
}

u32 eDevMgrGetiPodInfo(const Device& device, TimePoint, IpodInfo& info) {
    info.major = 7;
    info.minor = 1;
    info.revision = 2;
    CopyText(info.name, device.identity.name);
    CopyText(info.serial, device.identity.serial);
    CopyText(info.model, "SIM100");
    return DEV_MGR_SUCCESS;
}

// Charging, volume and the playing application

u32 eDevMgriPodSetMaxCurrent(Device& device, TimePoint, u16 milliamps) {
    device.settings.maxCurrent = milliamps;
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodSetInternalBatteryChargeState(Device& device, TimePoint, u8 allow) {
    device.settings.mayCharge = allow;
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodGetBatteryPowerState(const Device& device, TimePoint, BatteryState& state) {
    state = device.settings.battery;
    return DEV_MGR_SUCCESS;
}

u32 eDevmgriPodGetVolume(const Device& device, TimePoint, u8& mute, u8& volume) {
    mute = device.settings.volumeFlag;
    volume = device.settings.volume;
    return DEV_MGR_SUCCESS;
}

u32 eDevmgriPodSetVolume(Device& device, TimePoint, u8 flag, u8 volume) {
    device.settings.volumeFlag = flag;
    device.settings.volume = volume;
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodGetNowPlayingAppname(const Device& device, TimePoint, char*& name) {
    name = device.player.State() == E_DEVMGR_IPOD_PLAY_STOPPED ? nullptr : strdup("Music");
    return DEV_MGR_SUCCESS;
}

}  // namespace

}  // namespace DeviceSimulator::Answers

DEVICE_MANAGER_SESSION_FUNCTIONS(DEVICE_SIMULATOR_FUNCTION)
