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

void PrintTable(Rows rows, bool isNumbered) {
    std::vector<std::size_t> widths;
    for (auto& row : rows) {
        std::transform(row.begin(), row.end(), row.begin(), Harmless);
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string room(widths[i] - DisplayWidth(row[i]), ' ');
            line += (i > 0 ? "  " : "") + (i == 0 && isNumbered ? room + row[i] : row[i] + room);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        PrintLine(line);
    }
}

}  // namespace IpodControl
