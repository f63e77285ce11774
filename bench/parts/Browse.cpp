// Browsing 100,000 songs, beside what the device manager itself takes for the same calls.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/CaselessText.h"
#include "bench/parts/Service.h"

namespace Bench {
namespace {

constexpr u32 kSongs = 100000;
constexpr u32 kPage = 10;
constexpr u32 kFetched = 100;  ///< what the service asks for at most
constexpr u32 kLetterGroup = 30000;

/// From the player itself, which knows no process and has this device.
void FetchFromDevice(u32 start, u32 count, BrowseItem* items) {
    constexpr u32 kProcess = 1;
    constexpr u32 kDevice = 7;
    if (eDevMgriPodGetItems(kProcess, kDevice, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, start,
                            &count, items) != DEV_MGR_SUCCESS) {
        throw std::runtime_error("the quick player has no items");
    }
    benchmark::DoNotOptimize(items);
}

u32 AnotherStart(u32 start) {
    return (start + 7919) % (kSongs - kPage);
}

void Page(benchmark::State& state) {
    Service& service = Service::Instance();
    service.EnterSongs();
    u32 start = 0;
    for (auto _ : state) {
        start = AnotherStart(start);
        const std::string request =
            "{\"jsonrpc\":\"2.0\",\"method\":\"getBrowseList\",\"params\":{\"startIndex\":" +
            std::to_string(start) + ",\"itemCount\":" + std::to_string(kPage) + "},\"id\":1}";
        benchmark::DoNotOptimize(service.Execute(request));
    }
    EmptyLog();
}

void PageFromDevice(benchmark::State& state) {
    std::vector<BrowseItem> items(kPage);
    u32 start = 0;
    for (auto _ : state) {
        start = AnotherStart(start);
        FetchFromDevice(start, kPage, items.data());
    }
}

void SongList(benchmark::State& state) {
    Service& service = Service::Instance();
    std::size_t size = 0;
    for (auto _ : state) {
        state.PauseTiming();
        service.Manager().ResetDatabase();
        state.ResumeTiming();
        size = service.Execute("{\"jsonrpc\":\"2.0\",\"method\":\"getSongList\",\"id\":1}").size();
    }
    state.counters["bytes"] = static_cast<double>(size);
    EmptyLog();
}

/// In the pages that the service asks for.
void ItemsFromDevice(benchmark::State& state, u32 count) {
    std::vector<BrowseItem> items(kFetched);
    for (auto _ : state) {
        for (u32 start = 0; start < count; start += kFetched) {
            FetchFromDevice(start, kFetched, items.data());
        }
    }
}

void LetterJump(benchmark::State& state) {
    Service& service = Service::Instance();
    for (auto _ : state) {
        state.PauseTiming();
        service.EnterSongs();
        state.ResumeTiming();
        const std::string reply = service.Execute(
            "{\"jsonrpc\":\"2.0\",\"method\":\"getNextAlphaNumericIndex\",\"params\":{\"startIndex\":0},"
            "\"id\":1}");
        if (reply.find(std::to_string(kLetterGroup)) == std::string::npos) {
            state.SkipWithError("the jump led elsewhere");
        }
    }
    EmptyLog();
}

/// Over names that have been fetched.
void Filter(benchmark::State& state, const char* text) {
    IpodManager& manager = Service::Instance().Manager();
    Service::Instance().EnterSongs();
    manager.SetItemFilter("fetches the whole level");
    for (auto _ : state) {
        manager.SetItemFilter("");
        manager.SetItemFilter(text);
    }
    manager.SetItemFilter("");
    EmptyLog();
}

/// The comparison alone, over names of other scripts than the quick player's.
void FilterScript(benchmark::State& state, std::initializer_list<const char*> titles, const char* text) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kSongs; ++i) {
        names.push_back(titles.begin()[i % titles.size()] + (' ' + std::to_string(i)));
    }
    for (auto _ : state) {
        CaselessPattern pattern(text);
        benchmark::DoNotOptimize(std::count_if(
            names.begin(), names.end(), [&](const std::string& name) { return pattern.IsPartOf(name); }));
    }
}

BENCHMARK(Page)->Name("page-10");
BENCHMARK(PageFromDevice)->Name("page-10/floor");
BENCHMARK(SongList)->Name("song-list");
BENCHMARK_CAPTURE(ItemsFromDevice, all, kSongs)->Name("song-list/floor");
BENCHMARK(LetterJump)->Name("letter-jump");
BENCHMARK_CAPTURE(ItemsFromDevice, group, kLetterGroup)->Name("letter-jump/floor");
BENCHMARK_CAPTURE(Filter, all, "LANTERN")->Name("filter-all");
BENCHMARK_CAPTURE(Filter, few, "R 01234")->Name("filter-few");
BENCHMARK_CAPTURE(Filter, none, "not in any name")->Name("filter-none");
BENCHMARK_CAPTURE(FilterScript, latin, {"Größe Über Alles", "Señorita Ångström del Café", "Mañana"}, "ÜBER")
    ->Name("filter-latin");
BENCHMARK_CAPTURE(FilterScript, cyrillic, {"Любовь и солнце в сентябре", "Группа крови", "Звезда по имени"},
                  "О")
    ->Name("filter-cyrillic");
BENCHMARK_CAPTURE(FilterScript, greek, {"Ὀδυσσεύς ᾄδει", "Η αγάπη που έχασα στην Αθήνα", "Μῆνιν ἄειδε"},
                  "ὈΔΥΣΣΕΎΣ")
    ->Name("filter-greek");
BENCHMARK_CAPTURE(FilterScript, japanese, {"音楽の時間 夏の夜の夢", "東京の空 さくら", "ありがとう ジャズ"},
                  "東京")
    ->Name("filter-japanese");
BENCHMARK_CAPTURE(FilterScript, emoji, {"Party 🎉🎊 night", "🎸 solo 🔥", "Love ❤️ and 🎵"}, "🎸")
    ->Name("filter-emoji");

}  // namespace
}  // namespace Bench
