// bench_music_folder [FILES]: writes so many tagged mp3 files (10,000), twelve an album with a cover of 640 x
// 640 for each album, below a scratch folder, and scans them: without a cache, for the first time with one,
// and again.
//
// Each scan is a process of its own, "bench_music_folder --scan FOLDER CACHE ROW", so that peak memory is its
// own.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "DeviceSimulator/music/CoverDrawing.h"
#include "DeviceSimulator/music/Library.h"
#include "DeviceSimulator/tools/DemoMusicTags.h"
#include "bench/Memory.h"
#include "bench/Result.h"

namespace {

using namespace DeviceSimulator;
namespace fs = std::filesystem;

constexpr int kTracksPerAlbum = 12;

/// About 30 s of silence: MPEG-1 layer III at 128 kbit/s, 1152 samples in 417 bytes.
std::string Silence() {
    std::string frame(417, '\0');
    frame.replace(0, 4, "\xFF\xFB\x90\x64");
    std::string sound;
    for (int i = 0; i < 1150; ++i) {
        sound += frame;
    }
    return sound;
}

bool WriteAlbum(const fs::path& folder, int album, int tracks, const std::string& sound) {
    TrackTags tags;
    tags.album = "Album " + std::to_string(album);
    tags.artist = "Artist " + std::to_string(album / 3);
    tags.albumArtist = tags.artist;
    tags.genre = "Genre " + std::to_string(album % 24);
    tags.composer = "Composer " + std::to_string(album % 100);
    const auto cover = EncodeJpeg(DrawCoverImage({640, 640}, tags.album, tags.artist), 90);
    const std::vector<DemoPicture> pictures{{cover.value(), true}};
    const fs::path place = folder / tags.artist / tags.album;
    fs::create_directories(place);
    for (int track = 1; track <= tracks; ++track) {
        tags.title = "Song " + std::to_string(album * kTracksPerAlbum + track);
        tags.track = static_cast<std::uint32_t>(track);
        const fs::path file = place / (std::to_string(track) + ".mp3");
        std::ofstream(file, std::ios::binary) << sound;
        if (!WriteTags(file, tags, pictures)) {
            return false;
        }
    }
    return true;
}

bool WriteMusic(const fs::path& folder, int files) {
    const std::string sound = Silence();
    for (int first = 0; first < files; first += kTracksPerAlbum) {
        if (!WriteAlbum(folder, first / kTracksPerAlbum, std::min(kTracksPerAlbum, files - first), sound)) {
            return false;
        }
    }
    return true;
}

int ScanHere(const char* folder, const char* cache, const std::string& row) {
    const auto began = std::chrono::steady_clock::now();
    const auto library = ScanMusicFolder(folder, cache);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
    Bench::Report(row, took.count());
    Bench::Report(row + "-peak", PeakMegabytes());
    return library->TrackCount() > 0 ? 0 : 1;
}

int ScanInProcess(const char* row, const fs::path& folder, const fs::path& cache) {
    std::string words[] = {"bench_music_folder", "--scan", folder, cache, row};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                         words[3].data(), words[4].data(), nullptr};
    pid_t process = 0;
    int status = 1;
    if (posix_spawn(&process, "/proc/self/exe", nullptr, nullptr, arguments, environ) == 0) {
        waitpid(process, &status, 0);
    }
    return status;
}

int Measure(int files) {
    std::string scratch = fs::temp_directory_path() / "music-folder-XXXXXX";
    if (mkdtemp(scratch.data()) == nullptr || !WriteMusic(scratch + "/music", files)) {
        std::fprintf(stderr, "cannot write the music below %s\n", scratch.c_str());
        return 1;
    }
    const fs::path music = scratch + "/music";
    const fs::path cache = scratch + "/cache";
    int status = ScanInProcess("scan-uncached", music, "");
    status |= ScanInProcess("scan-first", music, cache);
    status |= ScanInProcess("scan-again", music, cache);
    fs::remove_all(scratch);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 5 && std::string_view(argv[1]) == "--scan") {
        return ScanHere(argv[2], argv[3], argv[4]);
    }
    int files = 10000;
    if (argc == 2) {
        const std::string_view text = argv[1];
        std::from_chars(text.data(), text.data() + text.size(), files);
    }
    return Measure(files);
}
