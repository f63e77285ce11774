// The service's log, as it grows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/EndToEnd/Deadline.h"

namespace EndToEnd {

struct LogEntry {
    std::string level;  ///< for example "WARN "
    std::string source;
    std::string message;  ///< with its newline, where it has one
};

/// Entries are found by their heads wherever these stand: some messages end without a newline.
std::vector<LogEntry> ParseLog(const std::string& text);

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, std::string_view text);

class LogFile {
  public:
    explicit LogFile(std::string path = "/home/root/ipod.log") : m_path(std::move(path)) {}

    /// Empty when there is no such file.
    std::string Text() const { return ReadFile(m_path); }
    std::vector<LogEntry> Entries() const { return ParseLog(Text()); }
    bool Contains(std::string_view text) const { return Text().find(text) != std::string::npos; }
    std::size_t Count(std::string_view text) const;
    /// Throws Timeout unless `text` appears.
    void WaitFor(std::string_view text, milliseconds patience = kPatience) const;

  private:
    std::string m_path;
};

}  // namespace EndToEnd
