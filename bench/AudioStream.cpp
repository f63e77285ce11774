// What the audio stream costs over the simulated sound card, and what restarts leave behind.
//
//     bench_audio_stream       10 seconds from capture to playback, then 200 restarts
#include <glib.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "IpodService/GstreamerStreamer.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr i32 kElementsChooseRate = -1;

void RunMainLoop(std::chrono::milliseconds time) {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_timeout_add(
        static_cast<guint>(time.count()),
        [](gpointer ended) {
            g_main_loop_quit(static_cast<GMainLoop*>(ended));
            return G_SOURCE_REMOVE;
        },
        loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

double CpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

long AnonymousKilobytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    long kilobytes = -1;
    while (status >> word)
        if (word == "RssAnon:")
            status >> kilobytes;
    return kilobytes;
}

long CountEntries(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<long>(std::distance(begin(entries), end(entries)));
}

void ReportResources(const char* when) {
    std::printf("%s: %ld descriptors, %ld threads, %ld kB anonymous\n", when, CountEntries("/proc/self/fd"),
                CountEntries("/proc/self/task"), AnonymousKilobytes());
}

void MeasureCpu() {
    constexpr std::chrono::seconds kTime(10);
    GstreamerStreamer streamer;
    streamer.StartPipeline(kElementsChooseRate);
    RunMainLoop(std::chrono::seconds(1));
    const double before = CpuSeconds();
    RunMainLoop(kTime);
    std::printf("capture to playback: %.2f %% of one CPU (at most 3)\n",
                (CpuSeconds() - before) / static_cast<double>(kTime.count()) * 100);
    streamer.StopPipeline();
}

void Restart(int times) {
    constexpr std::chrono::milliseconds kPlaying(20);
    for (int i = 0; i < times; ++i) {
        GstreamerStreamer streamer;
        streamer.StartPipeline(kElementsChooseRate);
        RunMainLoop(kPlaying);
        streamer.StopPipeline();
    }
}

}  // namespace

int main() {
    CLogger::Instance().SetLevel(LogLevel::kOff);
    std::string folder = std::filesystem::temp_directory_path() / "audio-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr)
        return EXIT_FAILURE;
    std::filesystem::create_symlink("/dev/zero", std::filesystem::path(folder) / "capture.pcm");
    setenv("DEVICE_SIMULATOR_AUDIO", folder.c_str(), 1);
    setenv("ALSA_CONFIG_PATH", ALSA_CONFIG, 1);

    MeasureCpu();
    Restart(40);
    ReportResources("after 40 restarts");
    Restart(200);
    ReportResources("after 200 more");
    std::filesystem::remove_all(folder);
}
