#include "tests/EndToEnd/LogFile.h"

#include <regex.h>

#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace EndToEnd {

namespace {

/// An entry's first line: the whole, the level's name, the source.
class HeadPattern {
  public:
    using Match = std::array<regmatch_t, 3>;

    HeadPattern() {
        constexpr const char* kText =
            "\\[[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\]"
            "\\[(TRACE|INFO |DEBUG|WARN |ERROR|FATAL)\\]\\[([^]:[]+:[0-9]+)\\]\n\t";
        if (regcomp(&m_pattern, kText, REG_EXTENDED) != 0)
            throw std::logic_error("bad pattern");
    }
    ~HeadPattern() { regfree(&m_pattern); }
    HeadPattern(const HeadPattern&) = delete;
    HeadPattern& operator=(const HeadPattern&) = delete;

    bool Find(const char* text, Match& match) const {
        return regexec(&m_pattern, text, match.size(), match.data(), 0) == 0;
    }

  private:
    regex_t m_pattern;
};

std::string Part(const char* text, const regmatch_t& match) {
    return {text + match.rm_so, text + match.rm_eo};
}

}  // namespace

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, std::string_view text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path);
}

std::vector<LogEntry> ParseLog(const std::string& text) {
    static const HeadPattern pattern;
    std::vector<LogEntry> entries;
    HeadPattern::Match match;
    const char* rest = text.c_str();
    while (pattern.Find(rest, match)) {
        if (!entries.empty())
            entries.back().message.assign(rest, static_cast<std::size_t>(match[0].rm_so));
        entries.push_back({Part(rest, match[1]), Part(rest, match[2]), {}});
        rest += match[0].rm_eo;
    }
    if (!entries.empty())
        entries.back().message = rest;
    return entries;
}

std::size_t LogFile::Count(std::string_view text) const {
    const std::string all = Text();
    std::size_t count = 0;
    for (std::size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + text.size()))
        ++count;
    return count;
}

void LogFile::WaitFor(std::string_view text, milliseconds patience) const {
    Require(
        "'" + std::string(text) + "' in " + m_path, [&] { return Contains(text); }, patience);
}

}  // namespace EndToEnd
