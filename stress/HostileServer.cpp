// "hostile_server SECONDS [SEED]": a service that lies, in every way that bytes can. A thread of its own
// talks to a client and to ipodctl's commands: answers with members missing or of other types, torn anywhere,
// with bytes changed, with garbage between, then silence or the connection's end. Every call must come back,
// in time and with an exit status that there is.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "IpodControl/commands/CommandLine.h"
#include "IpodControl/commands/Method.h"
#include "IpodControl/commands/Output.h"
#include "ServiceUtil/JpegMarkers.h"
#include "ServiceUtil/JsonText.h"

namespace IpodControl {
namespace {

using Clock = std::chrono::steady_clock;
using Random = std::mt19937;

std::size_t Below(Random& random, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

template <typename T, std::size_t N>
const T& OneOf(Random& random, const T (&list)[N]) {
    return list[Below(random, N)];
}

Json::Value AnyValue(Random& random, int depth) {
    static const char* const kTexts[] = {
        "",        "failure", "success", "browsing",    "/9j/4AAQSkZJRgABAQAAAQ",
        "\x1b[2J", "all",     "Artists", "\u202e\u661f"};
    static const char* const kMembers[] = {
        "connected",     "success",         "enabled",   "mode",           "isPaused",       "trackInfo",
        "categoryItems", "albumArt",        "itemIndex", "isRootCategory", "isLastCategory", "totalCount",
        "itemId",        "itemName",        "trackTime", "trackDuration",  "trackTitle",     "resetSuccess",
        "isPlaying",     "hasPlayableData", "trackIndex"};
    switch (Below(random, depth > 3 ? 5 : 8)) {
        case 0:
            return {};
        case 1:
            return Below(random, 4) != 0;
        case 2:
            return Json::UInt64{random()} * Json::UInt64{random()};
        case 3:
            return Json::Int{static_cast<int>(Below(random, 5)) - 2};
        case 4:
            return OneOf(random, kTexts);
        case 5: {
            Json::Value list(Json::arrayValue);
            for (std::size_t i = Below(random, 4); i > 0; --i) {
                list.append(AnyValue(random, depth + 1));
            }
            return list;
        }
        default: {
            Json::Value object(Json::objectValue);
            for (std::size_t i = Below(random, 12); i > 0; --i) {
                object[OneOf(random, kMembers)] = AnyValue(random, depth + 1);
            }
            return object;
        }
    }
}

Json::Value Notification(Random& random) {
    static const char* const kNames[] = {"trackInfoNotification",      "trackTimeNotification",
                                         "trackPausedNotification",    "ipodAlbumArtNotification",
                                         "ipodConnectionNotification", ""};
    Json::Value value;
    value["jsonrpc"] = "2.0";
    value["method"] = OneOf(random, kNames);
    value["params"] = AnyValue(random, 0);
    return value;
}

std::string Line(Random& random, Json::UInt64 id) {
    Json::Value value;
    if (Below(random, 4) == 0) {
        value = Notification(random);
    } else {
        value["jsonrpc"] = "2.0";
        value["id"] = Below(random, 10) == 0 ? AnyValue(random, 3) : Json::Value(id);
        value[Below(random, 10) == 0 ? "error" : "result"] = AnyValue(random, 0);
    }
    std::string line = WriteJson(value) + "\n";
    if (Below(random, 8) == 0) {
        for (std::size_t i = Below(random, 6); i > 0; --i) {
            line[Below(random, line.size())] = static_cast<char>(random());
        }
    }
    if (Below(random, 20) == 0) {
        line.resize(Below(random, line.size()));
    }
    return line;
}

/// One connection: some lines for each request, in pieces.
void Talk(Random& random, int connection) {
    const timeval patience{0, 60'000};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    Json::UInt64 id = 1;
    char bytes[4096];
    while (recv(connection, bytes, sizeof bytes, 0) > 0 && Below(random, 12) != 0) {
        for (std::size_t i = Below(random, 12); i > 0; --i) {
            std::string line = Line(random, id);
            id += Below(random, 2);
            while (!line.empty()) {
                const std::size_t piece =
                    Below(random, 3) == 0 ? 1 + Below(random, line.size()) : line.size();
                if (send(connection, line.data(), piece, MSG_NOSIGNAL) < 0) {
                    return;
                }
                line.erase(0, piece);
            }
        }
    }
}

class Server {
  public:
    explicit Server(unsigned seed) : m_random(seed) {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* const plain = reinterpret_cast<sockaddr*>(&address);
        if (bind(m_listener, plain, size) != 0 || listen(m_listener, 8) != 0 ||
            getsockname(m_listener, plain, &size) != 0) {
            std::perror("listen");
            std::exit(2);
        }
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { Serve(); });
    }
    ~Server() {
        m_isOver = true;
        shutdown(m_listener, SHUT_RDWR);
        m_thread.join();
        close(m_listener);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::string Port() const { return std::to_string(m_port); }

  private:
    void Serve() {
        while (!m_isOver) {
            const int connection = accept(m_listener, nullptr, nullptr);
            if (connection >= 0) {
                Talk(m_random, connection);
                close(connection);
            }
        }
    }

    const int m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::uint16_t m_port = 0;
    Random m_random;
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

std::vector<std::string> AnyCommand(Random& random) {
    static const std::vector<std::string> kSpecial[] = {{"status"},
                                                        {"browse"},
                                                        {"browse", "Artists", "\u661f"},
                                                        {"browse", "--play", "Songs"},
                                                        {"watch", "--for", "0.05"},
                                                        {"art", "/dev/null"},
                                                        {"wait", "playing"},
                                                        {"wait", "ready"},
                                                        {"raw", "{}"}};
    std::vector<std::string> words = OneOf(random, kSpecial);
    if (Below(random, 2) == 0) {
        const Method& method = Methods()[Below(random, Methods().size())];
        words = {std::string(method.name)};
        if (method.first.isRequired) {
            words.emplace_back(method.first.kind == ParameterKind::OnOff ? "on" : "4");
        }
    }
    if (Below(random, 2) == 0) {
        words.emplace_back("--json");
    }
    return words;
}

void CutAnything(Random& random) {
    std::string bytes = "\xff\xd8";
    for (std::size_t i = Below(random, 200); i > 0; --i) {
        static const char kLikely[] = {'\xff', '\xda', '\xc0', '\xd9', '\x00', '\x04'};
        bytes += Below(random, 2) == 0 ? OneOf(random, kLikely) : static_cast<char>(random());
    }
    const auto jpeg = MeasureJpeg({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    if (!jpeg || jpeg->length > bytes.size()) {
        std::fprintf(stderr, "a picture of %zu bytes is cut wrongly\n", bytes.size());
        std::exit(1);
    }
}

int Run(std::chrono::seconds time, unsigned seed) {
    Random random(seed);
    const Server server(seed + 1);
    const auto end = Clock::now() + time;
    // The results are of no use, and neither are the complaints.
    const int report = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (std::freopen("/dev/null", "w", stdout) == nullptr ||
        std::freopen("/dev/null", "w", stderr) == nullptr) {
        return 2;
    }
    int runs = 0;
    for (; Clock::now() < end; ++runs) {
        CutAnything(random);
        std::vector<std::string> words = AnyCommand(random);
        words.insert(words.end(), {"--port", server.Port(), "--timeout", "0.1"});
        const auto begin = Clock::now();
        const int status = RunCommandLine(words);
        const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
        // Each of a command's calls may take its time; a sanitizer makes all slower.
        if (status < kDone || status > kNoService || took > std::chrono::seconds(10)) {
            dprintf(report, "seed %u: %s ended with %d after %d ms\n", seed, words.front().c_str(), status,
                    static_cast<int>(took.count()));
            return 1;
        }
    }
    dprintf(report, "seed %u: %d commands\n", seed, runs);
    return 0;
}

}  // namespace
}  // namespace IpodControl

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
    const auto seed = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : std::random_device()();
    return IpodControl::Run(std::chrono::seconds(seconds), seed);
}
