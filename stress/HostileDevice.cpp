// "hostile_device", inside the sandbox: a device manager that lies and fails. Every event comes with hostile
// numbers and texts, and every function fails with several codes while players come and go and all methods
// are called. The service must answer each request with a result, must not end, and must work again
// afterwards.

#include <cstdlib>
#include <exception>
#include <iostream>

#include "DeviceManager/DeviceManagerValues.h"
#include "DeviceSimulator/wire/FunctionId.h"
#include "ServiceUtil/JsonText.h"
#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

struct MethodCall {
    const char* method;
    const char* params;
};

// All but `exit`, which ends the service.
constexpr MethodCall kCalls[] = {
    {"start", "null"},
    {"isIpodConnected", "null"},
    {"setRepeatMode", "{'mode':'all'}"},
    {"getRepeatMode", "null"},
    {"enableShuffle", "{'enable':true}"},
    {"isShuffleEnabled", "null"},
    {"getCurrentTrackInfo", "null"},
    {"getCurrentAlbumArt", "null"},
    {"getCurrentAlbumArtDelayed", "null"},
    {"getHasPlayableData", "null"},
    {"playFirst", "null"},
    {"play", "null"},
    {"playPause", "null"},
    {"pause", "null"},
    {"next", "null"},
    {"previous", "null"},
    {"fastForwardSong", "{'enable':true}"},
    {"rewindSong", "{'enable':false}"},
    {"isTrackPaused", "null"},
    {"getBrowseList", "null"},
    {"getSongList", "null"},
    {"selectBrowseBack", "null"},
    {"selectBrowseItem", "{'itemId':4}"},
    {"filterBrowseList", "{'searchText':'a'}"},
    {"getBrowseList", "{'startIndex':-3,'itemCount':5}"},
    {"getNextAlphaNumericIndex", "{'startIndex':-3}"},
    {"getPrevAlphaNumericIndex", "{'startIndex':2147483647}"},
    {"selectBrowseItem", "{'itemId':0}"},
    {"getBrowseList", "{'startIndex':2147483647,'itemCount':2147483647}"},
    {"resetBrowseList", "null"},
    {"stop", "null"},
};

void Check(bool isRight, const std::string& what) {
    if (!isRight)
        throw std::runtime_error(what);
}

void CallAll(Client& client) {
    for (const MethodCall& call : kCalls)
        Check(!client.Call(call.method, call.params).isMember("error"),
              std::string("error of ") + call.method);
}

/// While `function` fails, a player goes, another comes, and every method is called.
void FailAndCallAll(Scene& scene, const std::string& function, std::uint32_t code) {
    const std::string situation = function + " answering " + std::to_string(code);
    std::string fail = "{'command':'fail','call':'" + function + "','code':" + std::to_string(code);
    // The service waits for a busy player for as long as it is busy.
    fail += code == DEV_MGR_IAP_APP_BUSY ? ",'times':1}" : "}";
    scene.Do(fail);
    scene.Do("{'command':'unplug'}");
    // One that has a database to build, or one that can be browsed at once.
    scene.Do(code == DEV_MGR_RESULT_NONE ? "{'command':'plug','type':'iap2'}"
                                         : "{'command':'plug','type':'iap'}");
    CallAll(scene.client);
    scene.Do("{'command':'clear','what':'scripts'}");
    Check(!scene.service.Status(), situation + ": the service has ended");
}

void EveryFunctionFailsWithAnyCode() {
    Scene scene;
    scene.PlugPlayer();
    for (const std::string_view function : DeviceSimulator::kFunctionNames)
        for (const std::uint32_t code :
             std::initializer_list<std::uint32_t>{DEV_MGR_RESULT_NONE, DEV_MGR_INVALID_DEVICE_HANDLE,
                                                  DEV_MGR_IAP_APP_BUSY, 0x80000000, 0xffffffff})
            FailAndCallAll(scene, std::string(function), code);
    scene.UnplugPlayer();
    scene.PlugPlayer();
    Check(scene.client.Result("playFirst")["success"] == true, "the next player does not play");
    Check(scene.service.Stop() == 0, "no orderly end after failing functions");
}

void SendEvent(Client& control, std::uint32_t id, std::uint32_t word, const Json::Value& texts) {
    Json::Value event = Quoted("{'command':'event'}");
    event["words"].append(id);
    for (int i = 0; i < 5; ++i)
        event["words"].append(word);
    event["texts"] = texts;
    Check(control.Exchange(WriteJson(event) + "\n")["ok"].asBool(), "refused: " + WriteJson(event));
}

void EveryEventCarriesAnything() {
    const std::uint32_t words[] = {0,
                                   1,
                                   DEV_MGR_MOUNT_PASSED,  // and a type of mass storage
                                   DEV_MGR_MOUNT_FAILED,
                                   DEV_MGR_DEVICE_TYPE_IAP_2WIRE,
                                   DEV_MGR_DEVICE_TYPE_MTP_1WIRE_NORMAL,
                                   DEV_MGR_DEVICE_TYPE_HUB,
                                   DEV_MGR_DEVICE_TYPE_NO_MEDIUM,
                                   279,
                                   1000,
                                   0x7fffffff,
                                   0xffffffff};
    const Json::Value texts[] = {Quoted("[]"), Quoted("['','','']"), Quoted("['%s%n%d','\xef\xbf\xbd','][']"),
                                 Quoted("['" + std::string(1024, 'x') + "']"),
                                 Quoted("['" + std::string(2000, '%') + "']")};
    Scene scene;
    scene.PlugPlayer();
    Check(scene.client.Result("start") == "success", "start fails");
    for (std::uint32_t id = 0; id <= 60; ++id) {
        if (id == DEV_MGR_EVENT_DEVICE_MANAGER_EXITED)
            continue;
        for (const std::uint32_t word : words)
            for (const Json::Value& text : texts)
                SendEvent(scene.control, id, word, text);
        Check(scene.client.Result("isIpodConnected").isObject(),
              "no answer after event " + std::to_string(id));
    }
    scene.Do("{'command':'event','words':[4294967295]}");
    CallAll(scene.client);
    Check(scene.service.Stop() == 0, "no orderly end after hostile events");
}

}  // namespace
}  // namespace EndToEnd

int main() {
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr) {
        std::cerr << "usage, through sandbox.sh: hostile_device\n";
        return 2;
    }
    try {
        EndToEnd::EveryFunctionFailsWithAnyCode();
        EndToEnd::EveryEventCarriesAnything();
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
    return 0;
}
