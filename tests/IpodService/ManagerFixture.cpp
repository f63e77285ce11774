#include "tests/IpodService/ManagerFixture.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "ServiceUtil/Logger.h"

namespace {

constexpr std::size_t kTimeLength = sizeof "[2026-01-31 23:59:59]" - 1;
constexpr std::size_t kTagLength = sizeof "[INFO ]" - 1;

// Whether an entry begins here: "[time][LEVEL][file:line]\n\t".
bool IsEntry(std::string_view text) {
    return text.size() > kTimeLength + kTagLength && text[0] == '[' && text[5] == '-' && text[14] == ':' &&
           text[kTimeLength - 1] == ']' && text[kTimeLength] == '[' &&
           text[kTimeLength + kTagLength - 1] == ']' && text[kTimeLength + kTagLength] == '[';
}

std::string Messages(std::string_view log) {
    std::string messages;
    for (std::size_t at = 0; at < log.size();) {
        if (!IsEntry(log.substr(at))) {
            messages += log[at++];
            continue;
        }
        messages.append(log.substr(at + kTimeLength, kTagLength)).append(" ");
        at = log.find("\n\t", at) + 2;
    }
    return messages;
}

}  // namespace

void RecordedNotifications::Record(std::string text) {
    const std::lock_guard lock(m_mutex);
    m_texts.push_back(std::move(text));
}

std::vector<std::string> RecordedNotifications::All() const {
    const std::lock_guard lock(m_mutex);
    return m_texts;
}

std::vector<std::string> RecordedNotifications::Take() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_texts, {});
}

void RecordedNotifications::OnTrackInfo(bool isPlaying, const NowPlayingPosition& position,
                                        const TrackMetadata& metadata, const TrackTimes& times) {
    std::ostringstream text;
    text << "track " << isPlaying << ' ' << position.index << '/' << position.count << ' ' << metadata.title
         << '|' << metadata.album << '|' << metadata.artist << ' ' << times.elapsed << '/' << times.total;
    Record(text.str());
}

void RecordedNotifications::OnTrackTimes(const TrackTimes& times) {
    Record("times " + std::to_string(times.elapsed) + '/' + std::to_string(times.total));
}

void RecordedNotifications::OnTrackTime(u32 time) {
    Record("time " + std::to_string(time));
}

void RecordedNotifications::OnConnection(bool connected) {
    Record("connected " + std::to_string(connected));
}

void RecordedNotifications::OnAlbumArt(const std::string& albumArt, u32 width, u32 height, int trackIndex) {
    Record("art " + std::to_string(albumArt.size()) + ' ' + std::to_string(width) + 'x' +
           std::to_string(height) + ' ' + std::to_string(trackIndex));
}

void RecordedNotifications::OnTrackPaused(bool paused) {
    Record("paused " + std::to_string(paused));
}

CapturedLog::CapturedLog(const std::filesystem::path& file) : m_file(file) {
    CLogger::Instance().Close();
    CLogger::Instance().SetLevel(LogLevel::kAll);
    CLogger::Instance().Open(m_file.c_str());
}

CapturedLog::~CapturedLog() {
    CLogger::Instance().Close();
    CLogger::Instance().SetLevel(LogLevel::kOff);
}

std::string CapturedLog::Take() {
    std::ifstream stream(m_file);
    std::ostringstream all;
    all << stream.rdbuf();
    const std::string text = all.str().substr(m_taken);
    m_taken += text.size();
    return Messages(text);
}

ScratchFolder::ScratchFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "ipod-test-XXXXXX";
    m_path = mkdtemp(pattern.data());
}

ScratchFolder::~ScratchFolder() {
    std::filesystem::remove_all(m_path);
}

void ScratchFolder::Touch(const std::string& name) const {
    std::filesystem::create_directories((m_path / name).parent_path());
    std::ofstream(m_path / name) << "x";
}

ManagerTest::ManagerTest() : m_log(m_scratch.Path() / "log") {
    DeviceSimulator::SimulatorOptions options;
    options.plugDelay = std::chrono::milliseconds(0);
    options.databaseBuildTime = std::chrono::milliseconds(0);
    m_simulator.Reset(options);
    DeviceFolders folders;
    folders.database = m_scratch.Path() / "iap2db";
    folders.playlists = m_scratch.Path() / "root";
    std::filesystem::create_directories(folders.playlists);
    m_manager = std::make_unique<IpodManager>(&m_notifications, folders);
}

ManagerTest::~ManagerTest() {
    m_simulator.ClearScripts();
    m_simulator.SetStandIns({});
    if (m_manager != nullptr && m_manager->State() != ConnectionState::Unregistered)
        m_manager->Shutdown();
    m_manager.reset();
}

bool ManagerTest::StepUntil(ConnectionState state) {
    for (int step = 0; step < 20; ++step) {
        if (m_manager->State() == state)
            return true;
        m_manager->UpdateConnection();
        m_simulator.Drain();
    }
    return m_manager->State() == state;
}

u32 ManagerTest::Connect(u32 type) {
    DeviceSimulator::DeviceDescription device;
    device.type = type;
    const u32 handle = m_simulator.Plug(device);
    EXPECT_TRUE(StepUntil(ConnectionState::BrowseReady));
    m_log.Take();
    m_notifications.Take();
    m_simulator.ClearCalls();
    return handle;
}

void ManagerTest::Fire(std::initializer_list<u32> words, std::initializer_list<std::string_view> texts) {
    m_simulator.Fire(DeviceSimulator::MakeEvent(words, texts));
    m_simulator.Drain();
}

std::vector<std::string> ManagerTest::TakeCalls() {
    std::vector<std::string> calls;
    for (const DeviceSimulator::CallRecord& call : m_simulator.Calls()) {
        std::string text = call.name + '(';
        for (std::size_t i = 2; i < call.arguments.size(); ++i)
            text += (i > 2 ? "," : "") + std::to_string(call.arguments[i]);
        calls.push_back(text + ')');
    }
    m_simulator.ClearCalls();
    return calls;
}
