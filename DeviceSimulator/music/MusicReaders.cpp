#include "DeviceSimulator/music/MusicReaders.h"

#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
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
class Reader {
  public:
    explicit Reader(std::chrono::milliseconds patience) : m_patience(patience) {}

    /// 0, or an errno.
    int Start() {
        m_received.clear();
        m_isGreeted = false;
        return m_program.Start(SOCK_STREAM, {kScanWork});
    }
    bool IsRunning() const { return m_program.IsRunning(); }
    bool IsGreeted() const { return m_isGreeted; }
    bool IsHungry() const { return m_given.size() < kChunk / 2; }
    bool IsLate() const { return !m_given.empty() && std::chrono::steady_clock::now() > m_due; }
    pollfd Poll() const { return {m_program.Socket(), POLLIN, 0}; }

    /// What it has room for at any time.
    void Give(const std::vector<std::size_t>& numbers, const std::vector<std::string>& paths) {
        if (m_given.empty()) {
            m_due = In(m_patience);
        }
        std::string message;
        Packer packer(message);
        for (const std::size_t number : numbers) {
            packer(std::string_view(paths[number]));
            m_given.push_back(number);
        }
        send(m_program.Socket(), message.data(), message.size(), MSG_NOSIGNAL);
    }

    /// False: it has hung up, or says what makes no sense.
    template <typename Take>
    bool Receive(const Take& take) {
        char bytes[65536];
        const ssize_t size = recv(m_program.Socket(), bytes, sizeof bytes, 0);
        if (size <= 0) {
            return size < 0 && (errno == EAGAIN || errno == EINTR);
        }
        m_received.append(bytes, static_cast<std::size_t>(size));
        std::string_view rest = m_received;
        std::uint32_t length = 0;
        bool isSound = true;
        while (isSound && rest.size() >= sizeof length) {
            std::memcpy(&length, rest.data(), sizeof length);
            isSound = length <= kMostScanAnswer;
            if (!isSound || rest.size() - sizeof length < length) {
                break;
            }
            isSound = TakeMessage(rest.substr(sizeof length, length), take);
            rest.remove_prefix(sizeof length + length);
        }
        m_received.erase(0, m_received.size() - rest.size());
        return isSound;
    }

    /// Ends it, and returns why it has ended.
    std::string End() {
        const bool isLate = IsLate();
        const int status = m_program.End();
        if (isLate) {
            return "it takes longer than " + std::to_string(m_patience.count()) + " ms";
        }
        return WIFEXITED(status) && WEXITSTATUS(status) == kOutOfMemoryStatus
                   ? "it takes too much memory"
                   : "the media program has ended (" + MediaProgram::DescribeEnd(status) + ")";
    }
    std::deque<std::size_t> TakeGiven() { return std::exchange(m_given, {}); }

  private:
    template <typename Take>
    bool TakeMessage(std::string_view message, const Take& take) {
        m_due = In(m_patience);
        if (!std::exchange(m_isGreeted, true)) {
            return message.empty();
        }
        ReadMusic read;
        Unpacker unpacker(message);
        PackScanned(unpacker, read.file);
        if (m_given.empty() || !unpacker.IsOver()) {
            return false;
        }
        take(m_given.front(), std::move(read));
        m_given.pop_front();
        return true;
    }

    const std::chrono::milliseconds m_patience;
    MediaProgram m_program;
    std::deque<std::size_t> m_given;  // not answered yet, in order
    std::string m_received;
    Deadline m_due{};  // of the first of m_given
    bool m_isGreeted = false;
};

class Readers {
  public:
    Readers(const std::vector<std::string>& paths, const MusicReading& reading)
        : m_paths(paths), m_reading(reading) {
        const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
        const std::size_t chunks = (paths.size() + kChunk - 1) / kChunk;
        for (std::size_t i = 0; i < std::min({processors, chunks, kMostReaders}); ++i) {
            m_readers.push_back(std::make_unique<Reader>(reading.patience));
        }
    }

    std::string Run() {
        auto ticked = std::chrono::steady_clock::now();
        while (m_error.empty() && m_taken < m_paths.size()) {
            for (const auto& reader : m_readers) {
                Feed(*reader);
            }
            Wait();
            if (std::chrono::steady_clock::now() - ticked >= kTick) {
                ticked = std::chrono::steady_clock::now();
                m_reading.tick();
            }
        }
        return m_error;
    }

  private:
    void Feed(Reader& reader) {
        if (!reader.IsHungry()) {
            return;
        }
        const auto numbers = NextChunk();
        if (numbers.empty()) {
            return;
        }
        const int error = reader.IsRunning() ? 0 : reader.Start();
        if (error != 0) {
            m_error = MediaProgram::Path() + ": " + std::generic_category().message(error);
            return;
        }
        reader.Give(numbers, m_paths);
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
                       [](const auto& reader) { return reader->Poll(); });
        PollUntil(ready, In(kTick));
        for (std::size_t i = 0; i < ready.size(); ++i) {
            Reader& reader = *m_readers[i];
            // What was late may have come meanwhile, as when this process stood still.
            const bool isSound =
                (ready[i].revents == 0 && !reader.IsLate()) ||
                reader.Receive([this](std::size_t number, ReadMusic read) { Take(number, std::move(read)); });
            if (reader.IsRunning() && (!isSound || reader.IsLate())) {
                Replace(reader);
            }
        }
    }

    /// What it was at has brought it down, if that happens twice: the first time it may have been somebody
    /// else, or this machine. All is another one's now.
    void Replace(Reader& reader) {
        const bool wasGreeted = reader.IsGreeted();
        const std::string reason = reader.End();
        auto given = reader.TakeGiven();
        if (!wasGreeted && ++m_failedStarts > 1) {
            m_error = MediaProgram::Path() + ": " + reason;
        } else if (wasGreeted && !given.empty() && !m_suspects.insert(given.front()).second) {
            Take(given.front(), {{}, reason});
            given.pop_front();
        }
        m_again.insert(m_again.begin(), given.begin(), given.end());
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
    std::vector<std::unique_ptr<Reader>> m_readers;
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
