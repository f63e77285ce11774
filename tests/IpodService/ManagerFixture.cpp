#include "tests/IpodService/ManagerFixture.h"

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include "ServiceUtil/Logger.h"

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
    static const std::regex header(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\](\[[A-Z ]+\])\[[^\]]*:\d+\]\n\t)");
    return std::regex_replace(text, header, "$1 ");
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
