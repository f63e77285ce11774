#include "ServiceUtil/Logger.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <memory>
#include <new>
#include <thread>

namespace {

// Outside the object and without destructors: when exit() is called with other threads alive, they go on
// logging after the singleton is gone.
constinit std::atomic<std::FILE*> g_file{nullptr};
constinit std::atomic<int> g_threshold{LogLevel::kAll};
constinit std::atomic<int> g_fileWriters{0};
constinit std::atomic<bool> g_ended{false};
constinit std::atomic<unsigned> g_zoneSeenAt{0};

/// The stream of one entry; while it lives, the log file it names is not closed.
class Stream {
  public:
    Stream() {
        g_fileWriters.fetch_add(1);
        m_file = g_file.load();
        if (m_file == nullptr) {
            g_fileWriters.fetch_sub(1);
        }
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() {
        if (m_file != nullptr) {
            g_fileWriters.fetch_sub(1);
        }
    }

    void Write(const char* bytes, std::size_t size) const {
        if (m_file == nullptr && g_ended.load()) {
            return;
        }
        std::FILE* stream = m_file != nullptr ? m_file : stdout;
        std::fwrite(bytes, 1, size, stream);
        std::fflush(stream);
    }

  private:
    std::FILE* m_file;
};

const char* TagOf(int level) {
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

struct EntryHead {
    std::tm time;
    const char* sourceFile;
    int line;
    int level;
};

/// Formats what fits into the buffer and returns the whole entry's length, as snprintf does; -1 on a bad
/// format.
__attribute__((format(printf, 4, 0))) int FormatEntry(char* buffer, std::size_t size, const EntryHead& head,
                                                      const char* format, std::va_list arguments) {
    const int headLength =
        std::snprintf(buffer, size, "[%04d-%02d-%02d %02d:%02d:%02d]%s[%s:%d]\n\t", head.time.tm_year + 1900,
                      head.time.tm_mon + 1, head.time.tm_mday, head.time.tm_hour, head.time.tm_min,
                      head.time.tm_sec, TagOf(head.level), head.sourceFile, head.line);
    if (headLength < 0) {
        return -1;
    }
    const std::size_t used = std::min(static_cast<std::size_t>(headLength), size);
    const int messageLength = std::vsnprintf(buffer + used, size - used, format, arguments);
    return messageLength < 0 ? -1 : headLength + messageLength;
}

/// localtime_r alone keeps the zone that it saw first. Once a second: tzset costs more than the rest of an
/// entry, for it looks at the zone's file.
void FollowTimeZone(std::time_t now) {
    const auto second = static_cast<unsigned>(now);
    if (g_zoneSeenAt.exchange(second) != second) {
        tzset();
    }
}

EntryHead MakeHead(const char* sourceFile, int line, int level) {
    EntryHead head{{}, sourceFile, line, level};
    const std::time_t now = std::time(nullptr);
    FollowTimeZone(now);
    localtime_r(&now, &head.time);
    return head;
}

}  // namespace

CLogger& CLogger::Instance() {
    static CLogger instance;
    return instance;
}

CLogger::~CLogger() {
    g_ended.store(true);  // what threads still say must not spill to standard output
    std::FILE* file = g_file.exchange(nullptr);
    // A thread in the middle of an entry keeps the file; the process's end closes it, and every entry is
    // flushed.
    if (file != nullptr && g_fileWriters.load() == 0) {
        std::fclose(file);
    }
}

bool CLogger::Open(const char* path) {
    if (path == nullptr || g_file.load() != nullptr) {
        return false;
    }
    std::FILE* file = std::fopen(path, "we");
    g_file.store(file);
    return file != nullptr;
}

bool CLogger::Close() {
    std::FILE* file = g_file.exchange(nullptr);
    if (file == nullptr) {
        return false;
    }
    while (g_fileWriters.load() != 0) {
        std::this_thread::yield();
    }
    std::fclose(file);
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
    Instance();
    if (g_threshold.load() > level) {
        return;
    }
    const EntryHead head = MakeHead(sourceFile, line, level);
    std::array<char, 1024> small;
    std::unique_ptr<char[]> large;

    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int formatted = FormatEntry(small.data(), small.size(), head, format, arguments);
    const std::size_t length = formatted < 0 ? 0 : static_cast<std::size_t>(formatted);
    if (length >= small.size()) {
        large.reset(new (std::nothrow) char[length + 1]);
        if (large) {
            FormatEntry(large.get(), length + 1, head, format, again);
        }
    }
    va_end(again);
    va_end(arguments);

    if (large) {
        Stream().Write(large.get(), length);
    } else {
        Stream().Write(small.data(), std::min(length, small.size() - 1));
    }
}
