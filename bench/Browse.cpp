// Browsing a large library on the simulated player: what a page, a filter, a letter jump and the list of all
// songs take.
//
//     bench_browse [tracks]     100000 when left out; the page is measured with 100 tracks as well

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "DeviceSimulator/embedded/Simulator.h"
#include "IpodService/CaselessText.h"
#include "IpodService/IpodManager.h"
#include "IpodService/IpodRequestHandler.h"
#include "JsonRpc/RpcMethod.h"

namespace {

using Handler = CIpodRequestHandler;

class Silent : public IIpodNotifications {
  public:
    void OnTrackInfo(bool, const NowPlayingPosition&, const TrackMetadata&, const TrackTimes&) override {}
    void OnTrackTimes(const TrackTimes&) override {}
    void OnTrackTime(u32) override {}
    void OnConnection(bool) override {}
    void OnAlbumArt(const std::string&, u32, u32, int) override {}
    void OnTrackPaused(bool) override {}
};

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Median in microseconds.
double MedianTime(int repetitions, const std::function<void()>& work) {
    std::vector<double> times;
    for (int i = 0; i < repetitions; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        times.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count());
    }
    return Median(std::move(times));
}

/// The same of processor time, which a busy machine leaves alone.
double MedianCpuTime(int repetitions, const std::function<void()>& work) {
    std::vector<double> times;
    for (int i = 0; i < repetitions; ++i) {
        const std::clock_t begin = std::clock();
        work();
        times.push_back(1e6 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC);
    }
    return Median(std::move(times));
}

/// A line of /proc/self/status, in MB.
double StatusMegabytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key))
            return std::strtod(line.c_str() + key.size(), nullptr) * 1024 / 1e6;
    }
    return 0;
}

void ResetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

/// The service's browse side over a connected player.
class Service {
  public:
    Service() {
        while (m_manager.State() != ConnectionState::BrowseReady) {
            m_manager.UpdateConnection();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::string Call(Json::Rpc::RpcMethod<Handler>::Member method, const std::string& params = "null") {
        const std::string text = "{\"jsonrpc\":\"2.0\",\"method\":\"\",\"params\":" + params + "}";
        std::string result;
        (m_handler.*method)(Json::Rpc::Request(text), result);
        return result;
    }
    std::string Page(int start) {
        return Call(&Handler::GetBrowseList,
                    "{\"startIndex\":" + std::to_string(start) + ",\"itemCount\":50}");
    }
    void EnterSongs() {
        m_manager.ResetDatabase();
        m_manager.BrowseTopCategory(DEV_MGR_CATEGORY_TRACK);
    }
    /// Items of the level, or of what its filter lets through.
    u32 ItemCount() {
        return m_manager.ListItems(0, 0, [](const BrowseItem&) {});
    }
    IpodManager& Manager() { return m_manager; }

  private:
    Silent m_notifications;
    IpodManager m_manager{&m_notifications, {"/nowhere/iap2db", "/nowhere"}};
    Handler m_handler{&m_manager};
};

double MeasurePage(Service& service) {
    service.EnterSongs();
    const int total = static_cast<int>(service.ItemCount());
    int start = 0;
    return MedianTime(2000, [&] {
        start = (start + 7919) % total;
        service.Page(start);
    });
}

/// Names of other scripts than the simulated player's.
std::vector<std::string> Compose(std::initializer_list<const char*> titles) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < 100000; ++i) {
        names.push_back(titles.begin()[i % titles.size()] + (' ' + std::to_string(i)));
    }
    return names;
}

void FilterNames(const char* script, std::initializer_list<const char*> titles, const char* present) {
    const std::vector<std::string> names = Compose(titles);
    for (const char* text : {present, "not in any name"}) {
        std::ptrdiff_t matches = 0;
        const double time = MedianCpuTime(21, [&] {
            CaselessPattern pattern(text);
            matches = std::count_if(names.begin(), names.end(),
                                    [&](const std::string& name) { return pattern.IsPartOf(name); });
        });
        std::printf("filter, %-22s %6td of %zu names   %8.2f ms\n", script, matches, names.size(),
                    time / 1000);
    }
}

void FilterScripts() {
    FilterNames("ASCII", {"Quiet Lantern Over the River", "Golden Days", "The Long Way"}, "LANTERN");
    FilterNames("Latin with accents", {"Größe Über Alles", "Señorita Ångström del Café", "Mañana"}, "ÜBER");
    FilterNames("apostrophes, dashes", {"Don’t Stop – Remastered", "“Heroes”", "It’s a Long Way"}, "DON’T");
    FilterNames("Cyrillic", {"Любовь и солнце в сентябре", "Группа крови", "Звезда по имени"}, "О");
    FilterNames("Greek", {"Ὀδυσσεύς ᾄδει", "Η αγάπη που έχασα στην Αθήνα", "Μῆνιν ἄειδε"}, "ὈΔΥΣΣΕΎΣ");
    FilterNames("Japanese", {"音楽の時間 夏の夜の夢", "東京の空 さくら", "ありがとう ジャズ"}, "東京");
    FilterNames("emoji", {"Party 🎉🎊 night", "🎸 solo 🔥", "Love ❤️ and 🎵"}, "🎸");
}

void MeasureFilter(Service& service) {
    FilterScripts();
    service.EnterSongs();
    const u32 names = service.ItemCount();
    service.Manager().SetItemFilter("fetches the whole level");
    for (const char* text : {"LANTERN", "e", "not in any name"}) {
        const double time = MedianCpuTime(21, [&] {
            service.Manager().SetItemFilter("");
            service.Manager().SetItemFilter(text);
        });
        std::printf("filter %-18s %6u of %u names   %8.2f ms\n", text, service.ItemCount(), names,
                    time / 1000);
    }
}

void MeasureJump(Service& service) {
    service.EnterSongs();
    DeviceSimulator::Simulator& simulator = DeviceSimulator::Simulator::Instance();
    std::string answer;
    simulator.ClearCalls();
    const double time = MedianTime(
        1, [&] { answer = service.Call(&Handler::GetNextAlphaNumericIndex, "{\"startIndex\":0}"); });
    std::int64_t largest = 0;
    int single = 0;
    const auto calls = simulator.Calls("eDevMgriPodGetItems");
    for (const DeviceSimulator::CallRecord& call : calls) {
        single += call.arguments.back() == 1;
        largest = std::max(largest, call.arguments.back());
    }
    std::printf("jump from 0: %zu item calls, %d of one item, at most %lld items   %8.2f ms   %s\n",
                calls.size(), single, static_cast<long long>(largest), time / 1000, answer.c_str());
}

void MeasureSongList(Service& service) {
    service.Manager().ResetDatabase();
    malloc_trim(0);
    ResetPeak();
    const double before = StatusMegabytes("VmRSS:");
    double text = 0;
    const double time =
        MedianTime(1, [&] { text = static_cast<double>(service.Call(&Handler::GetSongList).size()) / 1e6; });
    const double peak = StatusMegabytes("VmHWM:") - before;
    const double after = StatusMegabytes("VmRSS:") - before;
    malloc_trim(0);
    std::printf(
        "song list: text %.1f MB   peak %.1f MB (%.1f times the text)   after %.1f MB, trimmed %.1f MB   "
        "%8.2f ms\n",
        text, peak, peak / text, after, StatusMegabytes("VmRSS:") - before, time / 1000);
}

double MeasureAll(Service& service, bool pageOnly) {
    const double page = MeasurePage(service);
    std::printf("page of 50 out of %6u items   %8.1f us\n", service.ItemCount(), page);
    if (!pageOnly) {
        MeasureFilter(service);
        MeasureJump(service);
        MeasureSongList(service);
    }
    std::fflush(stdout);
    return page;
}

/// The simulated player reads the size of its library once a process.
double MeasureInChild(const char* tracks, bool pageOnly) {
    int ends[2];
    if (pipe(ends) != 0)
        return 0;
    if (fork() == 0) {
        setenv("DEVICE_SIMULATOR_TRACKS", tracks, 1);
        setenv("DEVICE_SIMULATOR_DEVICE", "iap", 1);
        CLogger::Instance().Open("/dev/null");
        CLogger::Instance().SetLevel(LogLevel::kInfo);
        double page = 0;
        // Not on the main thread, whose heap is another kind.
        std::thread([&] {
            Service service;
            page = MeasureAll(service, pageOnly);
        }).join();
        _exit(write(ends[1], &page, sizeof page) == sizeof page ? 0 : 1);
    }
    double page = 0;
    close(ends[1]);
    if (read(ends[0], &page, sizeof page) != sizeof page)
        page = 0;
    close(ends[0]);
    wait(nullptr);
    return page;
}

}  // namespace

int main(int argc, char** argv) {
    const double small = MeasureInChild("100", true);
    const double large = MeasureInChild(argc > 1 ? argv[1] : "100000", false);
    if (small <= 0 || large <= 0)
        return 1;
    std::printf("page out of the large library / out of 100: %.2f\n", large / small);
    return 0;
}
