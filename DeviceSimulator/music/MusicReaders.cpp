#include "DeviceSimulator/music/MusicReaders.h"

#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "DeviceSimulator/helper/MediaProgram.h"
#include "ServiceUtil/Poll.h"

namespace DeviceSimulator {

namespace {

constexpr std::size_t kMostReaders = 8;
/// Files that a reader is given at a time: neighbours, which have their cover in common.
constexpr std::size_t kChunk = 16;
/// That no file is read ahead of one that has not been taken: their answers are kept.
constexpr std::size_t kMostAhead = 512;
constexpr std::chrono::milliseconds kTick{100};

/// One running program, and the files that it has been given.
struct Reader {
    MediaProgram program;
    std::deque<std::size_t> given;  // not answered yet, in order
    std::string received;
    Deadline due{};  // of the first of `given`
    bool isGreeted = false;

    bool IsLate() const { return !given.empty() && std::chrono::steady_clock::now() > due; }
};

class Readers {
  public:
    Readers(const std::vector<std::string>& paths, const MusicReading& reading)
        : m_paths(paths), m_reading(reading) {
        const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
        const std::size_t chunks = (paths.size() + kChunk - 1) / kChunk;
        m_readers = std::vector<Reader>(std::min({processors, chunks, kMostReaders}));
    }

    std::string Run() {
        auto ticked = std::chrono::steady_clock::now();
        while (m_error.empty() && m_taken < m_paths.size()) {
            std::for_each(m_readers.begin(), m_readers.end(), [this](Reader& reader) { Feed(reader); });
            Wait();
            if (std::chrono::steady_clock::now() - ticked >= kTick) {
                ticked = std::chrono::steady_clock::now();
                m_reading.tick();
            }
        }
        return m_error;
    }

  private:
    /// With what it has room for at any time.
    void Feed(Reader& reader) {
        const auto numbers = reader.given.size() < kChunk / 2 ? NextChunk() : std::vector<std::size_t>();
        if (numbers.empty()) {
            return;
        }
        if (!reader.program.IsRunning()) {
            reader.received.clear();
            reader.isGreeted = false;
            if (const int error = reader.program.Start(SOCK_STREAM, {kScanWork}); error != 0) {
                m_error = MediaProgram::Path() + ": " + std::generic_category().message(error);
                return;
            }
        }
        if (reader.given.empty()) {
            reader.due = In(m_reading.patience);
        }
        std::string message;
        Packer packer(message);
        for (const std::size_t number : numbers) {
            packer(std::string_view(m_paths[number]));
            reader.given.push_back(number);
        }
        send(reader.program.Socket(), message.data(), message.size(), MSG_NOSIGNAL);
    }

    std::vector<std::size_t> NextChunk() {
        std::vector<std::size_t> numbers;
        while (numbers.size() < kChunk && !m_again.empty()) {
            numbers.push_back(m_again.front());
            m_again.pop_front();
        }
        const std::size_t end = std::min(m_paths.size(), m_taken + kMostAhead);
        while (numbers.size() < kChunk && m_next < end) {
            numbers.push_back(m_next++);
        }
        return numbers;
    }

    void Wait() {
        std::vector<pollfd> ready;
        std::transform(m_readers.begin(), m_readers.end(), std::back_inserter(ready),
                       [](const Reader& reader) {
                           return pollfd{reader.program.Socket(), POLLIN, 0};
                       });
        PollUntil(ready, In(kTick));
        for (std::size_t i = 0; i < ready.size(); ++i) {
            Reader& reader = m_readers[i];
            // What was late may have come meanwhile, as when this process stood still.
            const bool isSound = (ready[i].revents == 0 && !reader.IsLate()) || Receive(reader);
            if (reader.program.IsRunning() && (!isSound || reader.IsLate())) {
                Replace(reader);
            }
        }
    }

    /// False: it has hung up, or says what makes no sense.
    bool Receive(Reader& reader) {
        char bytes[65536];
        const ssize_t size = recv(reader.program.Socket(), bytes, sizeof bytes, 0);
        if (size <= 0) {
            return size < 0 && (errno == EAGAIN || errno == EINTR);
        }
        reader.received.append(bytes, static_cast<std::size_t>(size));
        std::string_view rest = reader.received;
        std::uint32_t length = 0;
        bool isSound = true;
        while (isSound && rest.size() >= sizeof length) {
            std::memcpy(&length, rest.data(), sizeof length);
            isSound = length <= kMostScanAnswer;
            if (!isSound || rest.size() - sizeof length < length) {
                break;
            }
            isSound = TakeMessage(reader, rest.substr(sizeof length, length));
            rest.remove_prefix(sizeof length + length);
        }
        reader.received.erase(0, reader.received.size() - rest.size());
        return isSound;
    }

    bool TakeMessage(Reader& reader, std::string_view message) {
        reader.due = In(m_reading.patience);
        if (!std::exchange(reader.isGreeted, true)) {
            return message.empty();
        }
        ReadMusic read;
        Unpacker unpacker(message);
        PackScanned(unpacker, read.file);
        if (reader.given.empty() || !unpacker.IsOver()) {
            return false;
        }
        Take(reader.given.front(), std::move(read));
        reader.given.pop_front();
        return true;
    }

    /// What it was at has brought it down, if that happens twice: the first time it may have been somebody
    /// else, or this machine. All is another one's now.
    void Replace(Reader& reader) {
        const std::string reason = End(reader);
        auto given = std::exchange(reader.given, {});
        if (!reader.isGreeted && ++m_failedStarts > 1) {
            m_error = MediaProgram::Path() + ": " + reason;
        } else if (reader.isGreeted && !given.empty() && !m_suspects.insert(given.front()).second) {
            Take(given.front(), {{}, reason});
            given.pop_front();
        }
        m_again.insert(m_again.begin(), given.begin(), given.end());
    }

    /// Returns why it has ended.
    std::string End(Reader& reader) const {
        const bool isLate = reader.IsLate();
        const int status = reader.program.End();
        if (isLate) {
            return "it takes longer than " + std::to_string(m_reading.patience.count()) + " ms";
        }
        return WIFEXITED(status) && WEXITSTATUS(status) == kOutOfMemoryStatus
                   ? "it takes too much memory"
                   : "the media program has ended (" + MediaProgram::DescribeEnd(status) + ")";
    }

    void Take(std::size_t number, ReadMusic read) {
        m_early.emplace(number, std::move(read));
        for (auto first = m_early.begin(); first != m_early.end() && first->first == m_taken;
             first = m_early.erase(first)) {
            m_reading.take(m_taken++, std::move(first->second));
        }
    }

    const std::vector<std::string>& m_paths;
    const MusicReading& m_reading;
    std::vector<Reader> m_readers;
    std::size_t m_next = 0;            // to be given
    std::deque<std::size_t> m_again;   // given to one that has ended
    std::set<std::size_t> m_suspects;  // that one was at when it ended
    int m_failedStarts = 0;
    std::size_t m_taken = 0;                   // so many have been, from the first on
    std::map<std::size_t, ReadMusic> m_early;  // not to be taken yet
    std::string m_error;
};

}  // namespace

std::string ReadMusicFiles(const std::vector<std::string>& paths, const MusicReading& reading) {
    return Readers(paths, reading).Run();
}

}  // namespace DeviceSimulator
