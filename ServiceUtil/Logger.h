// The process's one log.
#pragma once

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
/// or to standard output while none is open; each is flushed at once.
class CLogger {
  public:
    /// Any thread. Created on first use with threshold kAll and no file; closes its file at process exit.
    static CLogger& Instance();

    CLogger(const CLogger&) = delete;
    CLogger& operator=(const CLogger&) = delete;
    virtual ~CLogger();

    /// Creates or truncates the file. False, with nothing changed, when a file is open already, the path is
    /// null or the file cannot be opened. The thread that configures the service; others may be logging.
    bool Open(const char* path);

    /// Waits for entries under way, then closes. False when no file is open. Same thread as Open.
    bool Close();

    /// Entries below the level are dropped from now on; levels outside kAll to kOff are clamped. Any thread.
    void SetLevel(int level);

    /// Maps a, t, i, d, w, e, f of either case to their levels and every other character to kOff. Any thread.
    static int LevelFromChar(char letter);

    /// Writes one entry, whole: entries of two threads never mix. The message may hold NUL bytes. Write
    /// errors are ignored. Any thread, also while the process exits; never in a signal handler.
    static void Log(const char* sourceFile, int line, int level, const char* format, ...)
        __attribute__((format(printf, 4, 5)));

  private:
    CLogger() = default;
};

#define LOG_INFO(...) CLogger::Log(__FILE__, __LINE__, LogLevel::kInfo, __VA_ARGS__)
#define LOG_DEBUG(...) CLogger::Log(__FILE__, __LINE__, LogLevel::kDebug, __VA_ARGS__)
#define LOG_WARN(...) CLogger::Log(__FILE__, __LINE__, LogLevel::kWarn, __VA_ARGS__)
#define LOG_ERROR(...) CLogger::Log(__FILE__, __LINE__, LogLevel::kError, __VA_ARGS__)
#define LOG_FATAL(...) CLogger::Log(__FILE__, __LINE__, LogLevel::kFatal, __VA_ARGS__)
