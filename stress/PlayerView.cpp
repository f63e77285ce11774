// A service that answers anything, and a person who presses anything: "player_view_fuzzer [SECONDS [SEED]]".
// It fails by crashing, and so under sanitizers; the seed is told first.

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "IpodControl/view/View.h"
#include "ServiceUtil/JsonText.h"

namespace {

using namespace IpodControl;
using namespace IpodControl::PlayerView;

class Person {
  public:
    explicit Person(unsigned seed) : m_random(seed) {}

    int Below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(m_random); }
    bool Often(int percent) { return Below(100) < percent; }

    Json::Int64 Number() {
        constexpr Json::Int64 kNumbers[] = {0,         1,         -1,        63,        64,       65, 100'000,
                                            INT32_MAX, INT32_MIN, INT64_MAX, INT64_MIN, -100'000, 2};
        return kNumbers[Below(std::size(kNumbers))];
    }

    std::string Text() {
        std::string text(static_cast<std::size_t>(Below(Often(5) ? 5000 : 30)), ' ');
        for (char& c : text) {
            c = static_cast<char>(Below(256));
        }
        // Whole characters too: wide, combining, controls of direction.
        return Often(50) ? text : text + "月\u0301\u202E\u200Fש\x1b[2J🎵";
    }

    std::string Base64() {
        // The beginning of a picture: 65,535 pixels a side, baseline or progressive, with whatever behind it.
        std::string text = Often(30) ? "/9j/wAARCP////8DASIAAhEBAxEB" : "/9j/wgARCABkAGQDASIAAhEBAxEB";
        constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (int i = Below(2000); i > 0; --i) {
            text += kDigits[Below(64)];
        }
        return text;
    }

    /// Of a shape that does not fit, or that does not fit quite.
    Json::Value Anything() {
        switch (Below(7)) {
            case 0:
                return Number();
            case 1:
                return Often(50);
            case 2:
                return Text();
            case 3:
                return {};
            case 4:
                return Json::Value(Json::arrayValue);
            case 5:
                return 1e300;
            default:
                return Json::Value(Json::objectValue);
        }
    }

    Json::Value Or(Json::Value right) { return Often(90) ? right : Anything(); }

    Json::Value List() {
        Json::Value list(Json::objectValue);
        list["isRootCategory"] = Or(Often(20));
        list["isLastCategory"] = Or(Often(50));
        list["totalCount"] = Or(Often(70) ? Json::Value(500) : Json::Value(Number()));
        Json::Value& items = list["categoryItems"] = Json::Value(Json::arrayValue);
        for (int i = Below(Often(1) ? 5'000 : 80); i > 0; --i) {
            Json::Value item(Json::objectValue);
            item["itemId"] = Or(i);
            item["itemName"] = Or(Often(50) ? "name" : Text());
            item["isSupported"] = Or(true);
            items.append(Or(item));
        }
        return Or(list);
    }

    Json::Value Result() {
        constexpr const char* kWords[] = {"success", "failure", "browsing", "off", "all", "current"};
        Json::Value flags(Json::objectValue);
        for (const char* name : {"success", "enabled", "connected", "isPaused"}) {
            flags[name] = Or(Often(80));
        }
        flags["mode"] = Or(kWords[Below(6)]);
        flags["itemIndex"] = Or(Number());
        return Or(Often(50) ? flags : Json::Value(kWords[Below(3)]));
    }

    Json::Value Answer(const Json::Value& request) {
        Json::Value answer;
        if (request.isArray()) {
            for (const Json::Value& each : request) {
                answer.append(Or(Answer(each)));
            }
            return Or(answer);
        }
        answer["jsonrpc"] = "2.0";
        answer["id"] = Or(request["id"]);
        const bool isList = request["method"] == "getBrowseList";
        answer[Often(95) ? "result" : "error"] = isList ? List() : Result();
        return answer;
    }

    Json::Value Notification() {
        constexpr const char* kMethods[] = {"trackInfoNotification",    "trackTimeNotification",
                                            "trackPausedNotification",  "ipodConnectionNotification",
                                            "ipodAlbumArtNotification", "anotherNotification"};
        Json::Value params(Json::objectValue);
        for (const char* name : {"isPlaying", "isTrackPaused", "connected"}) {
            params[name] = Or(Often(80));
        }
        for (const char* name : {"trackIndex", "trackCount", "trackTime", "trackDuration", "imageWidth"}) {
            params[name] = Or(Often(50) ? Json::Value(1) : Json::Value(Number()));
        }
        for (const char* name : {"trackTitle", "trackArtist", "trackAlbum"}) {
            params[name] = Or(Text());
        }
        params["albumArt"] = Or(Base64());
        const Json::Value info = params;
        params["trackInfo"] = Or(info);
        Json::Value notification;
        notification["jsonrpc"] = "2.0";
        notification["method"] = kMethods[Below(6)];
        notification["params"] = Or(params);
        return notification;
    }

    char32_t Press() {
        constexpr char32_t kCharacters[] = U" np,.sra[]/?x月\x1b";
        if (Often(40)) {
            return kCharacters[Below(std::size(kCharacters))];
        }
        return static_cast<char32_t>(Often(10) ? Below(kEnter)
                                               : static_cast<int>(kEnter) + Below(kRedraw - kEnter + 1));
    }

  private:
    std::mt19937 m_random;
};

void Hear(ViewModel& model, const Json::Value& value) {
    // By way of the text, as it would come.
    if (const auto message = Message::Parse(WriteJson(value))) {
        model.Take(*message);
    }
}

void Look(Person& person, ViewModel& model) {
    const Size size{person.Below(60), person.Below(200)};
    model.SetListRows(ListRows(size, model));
    Canvas canvas(size, person.Often(50) ? Charset::Utf8 : Charset::Ascii);
    Draw(canvas, model, {person.Often(50) ? 256 : person.Below(9), "somewhere"});
}

/// One connection; gives back how many messages were heard.
int Visit(Person& person, ViewModel& model, Time& now) {
    int heard = 0;
    model.Connected();
    for (int i = 0; i < 300; ++i) {
        now += std::chrono::milliseconds(person.Below(500));
        model.SetTime(now);
        model.Press(person.Press());
        for (const std::string& line : model.TakeLines()) {
            if (person.Often(95)) {
                Hear(model, person.Answer(*ReadJson(line)));
                ++heard;
            }
        }
        if (person.Often(30)) {
            Hear(model, person.Notification());
            ++heard;
        }
        if (person.Often(20)) {
            Look(person, model);
        }
    }
    model.Disconnected("gone");
    return heard;
}

}  // namespace

int main(int argc, char** argv) {
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(argc > 1 ? std::atoi(argv[1]) : 5);
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atoll(argv[2])) : std::random_device{}();
    std::printf("seed %u\n", seed);
    std::fflush(stdout);
    std::setlocale(LC_ALL, "C.UTF-8");
    Person person(seed);
    Time now{};
    int heard = 0;
    while (std::chrono::steady_clock::now() < end) {
        ViewModel model;
        heard += Visit(person, model, now);
        heard += Visit(person, model, now);
    }
    std::printf("%d messages\n", heard);
    return 0;
}
