#include "IpodControl/commands/Output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "IpodControl/DisplayText.h"
#include "ServiceUtil/JsonText.h"

namespace IpodControl {

void PrintText(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintLine(std::string_view line) {
    PrintText(line);
    std::fputc('\n', stdout);
}

void PrintJson(const Json::Value& value) {
    PrintLine(HarmlessJson(WriteJson(value)));
}

void Complain(std::string_view sentence) {
    std::fflush(stdout);
    const std::string line = "ipodctl: " + Harmless(sentence) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

int Complain(const Problem& problem) {
    Complain(problem.text + ".");
    return kNoService;
}

bool FlushOutput() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return true;
    }
    Complain(std::string("cannot write the output: ") + std::strerror(errno) + ".");
    return false;
}

void Table::Add(const std::vector<std::string>& cells) {
    auto& row = m_rows.emplace_back();
    std::transform(cells.begin(), cells.end(), std::back_inserter(row), Harmless);
}

void Table::Print() const {
    std::vector<std::size_t> widths(m_columns.size());
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    for (const auto& row : m_rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t room = widths[i] - DisplayWidth(row[i]);
            line += i > 0 ? "  " : "";
            line.append(m_columns[i] == Align::Right ? room : 0, ' ').append(row[i]);
            line.append(m_columns[i] == Align::Left && i + 1 < row.size() ? room : 0, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        PrintLine(line);
    }
}

}  // namespace IpodControl
