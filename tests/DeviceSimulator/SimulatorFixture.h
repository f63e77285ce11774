// What the tests of the C functions share: a simulator whose clock they move, a music library small enough to
// reckon with by hand, and a process that notes what its callback is told.
#pragma once

#include <gtest/gtest.h>
#include <json/json.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "DeviceSimulator/control/EventNames.h"
#include "DeviceSimulator/embedded/Simulator.h"
#include "DeviceSimulator/music/LibraryBuilder.h"
#include "DeviceSimulator/run/Engine.h"
#include "ServiceUtil/JsonText.h"

namespace DeviceSimulator::Test {

using namespace std::chrono_literals;

constexpr std::uint32_t kTracks = 24;

/// Track t is "Title t", with two digits, and 10 s long; three tracks an album, two albums an artist, two
/// artists a genre; odd albums run at 48000 Hz. No composers; one playlist, the tracks backwards. Album 0 has
/// no cover, the others have one of 2 x 3 pixels.
inline std::shared_ptr<const Library> MakeTestLibrary() {
    const auto name = [](const char* kind, std::uint32_t number) {
        return kind + std::string(number < 10 ? " 0" : " ") + std::to_string(number);
    };
    LibraryBuilder builder;
    const auto covers = std::make_shared<CoverFolder>("", false);
    ItemList backwards;
    for (std::uint32_t t = 0; t < kTracks; ++t) {
        TrackTags tags;
        tags.title = name("Title", t);
        tags.artist = name("Artist", t / 6);
        tags.album = name("Album", t / 3);
        tags.genre = name("Genre", t / 12);
        tags.durationMs = 10'000;
        tags.sampleRate = t / 3 % 2 == 1 ? 48000 : 44100;
        CoverKey cover;
        if (t >= 3) {
            cover = {std::to_string(t / 3), 2, 3};
            covers->Keep(cover, std::string("\xFF\xD8") + static_cast<char>(t / 3));
        }
        backwards.insert(backwards.begin(), builder.Add(tags, {}, covers->Number(cover)));
    }
    builder.AddPlaylist("Backwards", backwards);
    return builder.Build(covers);
}

/// An event by its word, with its first value when it has one: "play-time=1000", "device-connected=hub".
inline std::string EventText(std::uint32_t id, std::uint32_t value) {
    const bool isOfDevice = id == DEV_MGR_EVENT_DEVICE_CONNECTED || id == DEV_MGR_EVENT_DEVICE_DISCONNECTED;
    const std::string text = isOfDevice ? std::string(DeviceTypeWord(value)) : std::to_string(value);
    return EventWord(id) + (text == "0" ? "" : "=" + text);
}

class SimulatorTest : public testing::Test {
  protected:
    SimulatorTest() { Restart({}); }
    ~SimulatorTest() override {
        Simulator::Instance().Reset();
        s_events.clear();
    }

    /// A simulator with the test library, or what `maker` makes, this fixture's clock and one registered
    /// process.
    void Restart(SimulatorOptions options, MusicSource::Maker maker = {}) {
        options.library = maker ? nullptr : MakeTestLibrary();
        Engine::Instance().Reset(
            std::move(options), [now = m_now] { return TimePoint{*now}; }, std::move(maker));
        ph = Register();
    }

    static u32 Register() {
        u32 process = 0;
        EXPECT_EQ(eDevMgrRegisterProcess(&process, Callback), DEV_MGR_SUCCESS);
        return process;
    }

    static void Callback(const DeviceEvent* event, u32 process) {
        const std::lock_guard lock(s_mutex);
        s_events[process].push_back(*event);
    }

    /// The clock, which stands still otherwise.
    void Move(std::chrono::nanoseconds time) { *m_now = m_now->load() + time; }
    void Pass(std::chrono::nanoseconds time) {
        Move(time);
        Engine::Instance().Loop().ClockMoved();
    }

    /// Plugs a player in and opens it, with a browse session.
    void OpenPlayer(u32 type = DEV_MGR_DEVICE_TYPE_IAP_2WIRE) {
        DeviceDescription device;
        device.type = type;
        dh = Simulator::Instance().Plug(device);
        ASSERT_EQ(eDevMgrOpenDevice(ph, dh), DEV_MGR_SUCCESS);
        ASSERT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), DEV_MGR_SUCCESS);
        TakeEvents(ph);
    }

    static std::vector<DeviceEvent> TakeEvents(u32 process) {
        Simulator::Instance().Drain();
        const std::lock_guard lock(s_mutex);
        return std::exchange(s_events[process], {});
    }

    /// The events since the last time, as EventText has them, with blanks between.
    std::string TakeEventText() {
        std::string text;
        for (const DeviceEvent& event : TakeEvents(ph)) {
            text += (text.empty() ? "" : " ") + EventText(event.words[0], event.words[1]);
        }
        return text;
    }

    /// Carries a command of the control socket out that is written with ' for ", and returns its answer.
    static Json::Value Do(std::string line) {
        std::replace(line.begin(), line.end(), '\'', '"');
        const auto answer = ReadJson(Simulator::Instance().Command(line)).value_or(Json::Value());
        EXPECT_EQ(answer["ok"].asBool(), !answer.isMember("error")) << line;
        return answer;
    }
    static bool IsDone(const std::string& line) { return Do(line)["ok"].asBool(); }

    u32 Select(u32 category, u32 index) { return eDevMgriPodSelectCategorizedIndex(ph, dh, category, index); }

    /// What a list holds from `start`, as much of it as is delivered at once.
    std::vector<BrowseItem> Items(i32 parentCategory, u32 parent, u32 category, u32 start = 0) {
        std::vector<BrowseItem> items(100);
        auto count = static_cast<u32>(items.size());
        EXPECT_EQ(eDevMgriPodGetItems(ph, dh, parentCategory, parent, category, start, &count, items.data()),
                  DEV_MGR_SUCCESS);
        items.resize(count);
        return items;
    }

    u32 Status() {
        u32 status = 99;
        EXPECT_EQ(eDevMgriPodGetPlayStatus(ph, dh, &status), DEV_MGR_SUCCESS);
        return status;
    }

    /// The title of what plays, or the result code.
    std::string Title() {
        TrackMetadataRecord record{};
        const u32 result = eDevMgriPodGetPlayingTrackMetaData(ph, dh, &record);
        return result == DEV_MGR_SUCCESS ? record.title : std::to_string(result);
    }

    u32 ph = 0;
    u32 dh = 0;

  private:
    // The simulator may look at it still when the test is over.
    std::shared_ptr<std::atomic<std::chrono::nanoseconds>> m_now =
        std::make_shared<std::atomic<std::chrono::nanoseconds>>(1000s);
    static inline std::mutex s_mutex;
    static inline std::map<u32, std::vector<DeviceEvent>> s_events;
};

}  // namespace DeviceSimulator::Test
