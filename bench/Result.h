// What a program has measured, for people on standard output and for report.py in the file that BENCH_RESULTS
// names, a line each.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <optional>
#include <string>

namespace Bench {

/// `row`: as bench/rows.json has it, and in the unit that stands there. `floor`: what as little as possible
/// costs.
inline void WriteResult(const std::string& row, double value, std::optional<double> floor = std::nullopt) {
    const char* path = std::getenv("BENCH_RESULTS");
    if (path == nullptr) {
        return;
    }
    std::ofstream file(path, std::ios::app);
    file.precision(std::numeric_limits<double>::digits10);
    file << "{\"row\": \"" << row << "\", \"value\": " << value;
    if (floor) {
        file << ", \"floor\": " << *floor;
    }
    file << "}\n";
}

inline void Report(const std::string& row, double value, std::optional<double> floor = std::nullopt) {
    std::printf("%-32s %12.2f", row.c_str(), value);
    if (floor) {
        std::printf(" %12.2f %8.2f", *floor, value / *floor);
    }
    std::printf("\n");
    std::fflush(stdout);
    WriteResult(row, value, floor);
}

}  // namespace Bench
