// The process's one log.
#pragma once

#include <atomic>
#include <initializer_list>
#include <string_view>

/// Levels of an entry and of the threshold. INFO lies below DEBUG: the threshold INFO lets both through.
namespace LogLevel {
inline constexpr int kAll = -1;
inline constexpr int kTrace = 0;
inline constexpr int kInfo = 1;
inline constexpr int kDebug = 2;
inline constexpr int kWarn = 3;
inline constexpr int kError = 4;
inline constexpr int kFatal = 5;
inline constexpr int kOff = 6;
}  // namespace LogLevel

/// The process's one log. An entry is "[time][LEVEL][file:line]\n\t" and the message, which brings its own
/// line end. The time is local; it follows a changed time zone within a second. Entries go to the open file,
/// or to standard output while none is open; each is written at once, by one call of the system.
class CLogger {
  public:
    /// Any thread. Created on first use with threshold kAll and no file; never destroyed, so that threads may
    /// log while the process exits. The process's end closes its file.
    static CLogger& Instance();

    CLogger(const CLogger&) = delete;
    CLogger& operator=(const CLogger&) = delete;
    virtual ~CLogger() = default;

    /// Creates or truncates the file. False, with nothing changed, when a file is open already, the path is
    /// null or the file cannot be opened. Any thread; others may be logging.
    bool Open(const char* path);

    /// Waits for the entry under way, then closes. False when no file is open. Any thread.
    bool Close();

    /// Entries below the level are dropped from now on; levels outside kAll to kOff are clamped. Any thread.
    void SetLevel(int level);

    /// Maps a, t, i, d, w, e, f of either case to their levels and every other character to kOff. Any thread.
    static int LevelFromChar(char letter);

    /// Whether an entry of the level is written: what is put together for an entry alone may be left where
    /// it is not. Any thread.
    static bool IsWritten(int level) { return g_threshold.load(std::memory_order_relaxed) <= level; }

    /// Writes one entry, whole: entries of two threads never mix. The message may hold NUL bytes. Write
    /// errors are ignored. Any thread, also while the process exits; never in a signal handler.
    static void Log(const char* sourceFile, int line, int level, const char* format, ...)
        __attribute__((format(printf, 4, 5)));

    /// The same with a message of several parts and no format, which costs half.
    static void LogPlain(const char* sourceFile, int line, int level,
                         std::initializer_list<std::string_view> message);

  private:
    CLogger() = default;

    static inline constinit std::atomic<int> g_threshold{LogLevel::kAll};
};

/// The arguments are worked out for an entry that is written, and for no other.
#define LOG_AT(level, ...) \
    (CLogger::IsWritten(level) ? CLogger::Log(__FILE__, __LINE__, level, __VA_ARGS__) : void())
#define LOG_INFO(...) LOG_AT(LogLevel::kInfo, __VA_ARGS__)
#define LOG_DEBUG(...) LOG_AT(LogLevel::kDebug, __VA_ARGS__)
#define LOG_WARN(...) LOG_AT(LogLevel::kWarn, __VA_ARGS__)
#define LOG_ERROR(...) LOG_AT(LogLevel::kError, __VA_ARGS__)
#define LOG_FATAL(...) LOG_AT(LogLevel::kFatal, __VA_ARGS__)
