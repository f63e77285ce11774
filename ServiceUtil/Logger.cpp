#include "ServiceUtil/Logger.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <string_view>

#include "ServiceUtil/Mutex.h"

namespace {

constexpr int kNoFile = -1;

// None of these has a destructor: when exit() is called with other threads alive, they go on logging.

/// Held from an entry's time to its last byte. A thread that is stuck in a full pipe never gives it up.
constinit Mutex g_mutex;
constinit int g_file GUARDED_BY(g_mutex) = kNoFile;
/// The entry that is being written, if it fits: the most that a pipe takes in one piece.
constinit std::array<char, 4096> g_buffer GUARDED_BY(g_mutex){};
/// The time as entries have it, of the second g_stamped.
constinit std::array<char, 64> g_stamp GUARDED_BY(g_mutex){};
constinit std::size_t g_stampLength GUARDED_BY(g_mutex) = 0;
constinit std::time_t g_stamped GUARDED_BY(g_mutex) = -1;

std::string_view TagOf(int level) {
    switch (level) {
        case LogLevel::kAll:
        case LogLevel::kTrace:
            return "[TRACE]";
        case LogLevel::kDebug:
            return "[DEBUG]";
        case LogLevel::kWarn:
            return "[WARN ]";
        case LogLevel::kError:
            return "[ERROR]";
        case LogLevel::kFatal:
            return "[FATAL]";
        default:
            return "[INFO ]";
    }
}

/// Text in room that is given. What does not fit is counted.
class Text {
  public:
    Text(char* room, std::size_t size) : m_room(room), m_size(size) {}

    void Append(std::string_view text) {
        std::memcpy(m_room + Used(), text.data(), std::min(text.size(), m_size - Used()));
        m_length += text.size();
    }
    void Append(int number) {
        std::array<char, 12> digits;
        const char* const end = std::to_chars(digits.begin(), digits.end(), number).ptr;
        Append({digits.data(), end});
    }
    /// False on a bad format.
    __attribute__((format(printf, 2, 0))) bool Append(const char* format, std::va_list arguments) {
        const int length = std::vsnprintf(m_room + Used(), m_size - Used(), format, arguments);
        m_length += static_cast<std::size_t>(std::max(length, 0));
        return length >= 0;
    }

    /// Of the whole text. One that fits is shorter than the room: a NUL stands behind it.
    std::size_t Length() const { return m_length; }
    bool Fits() const { return m_length < m_size; }

  private:
    std::size_t Used() const { return std::min(m_length, m_size); }

    char* m_room;
    std::size_t m_size;
    std::size_t m_length = 0;
};

/// localtime_r alone keeps the zone that it saw first, and tzset looks at the zone's file: once a second.
std::string_view Stamp() REQUIRES(g_mutex) {
    const std::time_t now = std::time(nullptr);
    if (now != g_stamped) {
        g_stamped = now;
        tzset();
        std::tm time{};
        localtime_r(&now, &time);
        const int length = std::snprintf(g_stamp.data(), g_stamp.size(), "[%04d-%02d-%02d %02d:%02d:%02d]",
                                         time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour,
                                         time.tm_min, time.tm_sec);
        g_stampLength = std::min(static_cast<std::size_t>(length), g_stamp.size() - 1);
    }
    return {g_stamp.data(), g_stampLength};
}

struct Head {
    const char* sourceFile;
    int line;
    int level;
};

void AppendHead(Text& entry, const Head& head) REQUIRES(g_mutex) {
    entry.Append(Stamp());
    entry.Append(TagOf(head.level));
    entry.Append("[");
    entry.Append(std::string_view(head.sourceFile));
    entry.Append(":");
    entry.Append(head.line);
    entry.Append("]\n\t");
}

/// In one piece, but where the file takes no more than a part.
void Write(const char* bytes, std::size_t size) REQUIRES(g_mutex) {
    const int file = g_file != kNoFile ? g_file : STDOUT_FILENO;
    while (size > 0) {
        const ssize_t written = ::write(file, bytes, size);
        if (written < 0 && errno != EINTR) {
            return;
        }
        const auto taken = static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        bytes += taken;
        size -= taken;
    }
}

/// `appendMessage(Text&)`, which answers whether there is a message, is asked again where the buffer is too
/// small for it.
template <typename AppendMessage>
void WriteEntry(const Head& head, AppendMessage appendMessage) EXCLUDES(g_mutex) {
    const MutexLock lock(g_mutex);
    Text entry(g_buffer.data(), g_buffer.size());
    AppendHead(entry, head);
    if (!appendMessage(entry)) {
        return;
    }
    if (entry.Fits()) {
        Write(g_buffer.data(), entry.Length());
        return;
    }
    const std::size_t size = entry.Length() + 1;
    const std::unique_ptr<char[]> room(new (std::nothrow) char[size]);
    if (room == nullptr) {
        Write(g_buffer.data(), g_buffer.size() - 1);
        return;
    }
    Text large(room.get(), size);
    AppendHead(large, head);
    appendMessage(large);
    Write(room.get(), size - 1);
}

}  // namespace

CLogger& CLogger::Instance() {
    static CLogger& instance = *new CLogger;
    return instance;
}

bool CLogger::Open(const char* path) {
    const MutexLock lock(g_mutex);
    if (path == nullptr || g_file != kNoFile) {
        return false;
    }
    g_file = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666);
    return g_file != kNoFile;
}

bool CLogger::Close() {
    const MutexLock lock(g_mutex);
    if (g_file == kNoFile) {
        return false;
    }
    ::close(g_file);
    g_file = kNoFile;
    return true;
}

void CLogger::SetLevel(int level) {
    g_threshold.store(std::clamp(level, LogLevel::kAll, LogLevel::kOff));
}

int CLogger::LevelFromChar(char letter) {
    switch (letter) {
        case 'a':
        case 'A':
            return LogLevel::kAll;
        case 't':
        case 'T':
            return LogLevel::kTrace;
        case 'i':
        case 'I':
            return LogLevel::kInfo;
        case 'd':
        case 'D':
            return LogLevel::kDebug;
        case 'w':
        case 'W':
            return LogLevel::kWarn;
        case 'e':
        case 'E':
            return LogLevel::kError;
        case 'f':
        case 'F':
            return LogLevel::kFatal;
        default:
            return LogLevel::kOff;
    }
}

void CLogger::Log(const char* sourceFile, int line, int level, const char* format, ...) {
    if (!IsWritten(level)) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    WriteEntry({sourceFile, line, level}, [&](Text& entry) {
        std::va_list once;
        va_copy(once, arguments);
        const bool isGood = entry.Append(format, once);
        va_end(once);
        return isGood;
    });
    va_end(arguments);
}

void CLogger::LogPlain(const char* sourceFile, int line, int level,
                       std::initializer_list<std::string_view> message) {
    if (!IsWritten(level)) {
        return;
    }
    WriteEntry({sourceFile, line, level}, [&](Text& entry) {
        for (const std::string_view part : message) {
            entry.Append(part);
        }
        return true;
    });
}
