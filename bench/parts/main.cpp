// What runs in one process, each beside the least that the same can cost ("/floor" behind its name). Google
// Benchmark's own switches apply:
//
//     bench_parts --benchmark_filter=page
#include <benchmark/benchmark.h>
#include <unistd.h>

#include "bench/parts/Pictures.h"
#include "bench/parts/Service.h"

int main(int count, char** words) {
    Bench::RegisterPictures();
    benchmark::Initialize(&count, words);
    if (benchmark::ReportUnrecognizedArguments(count, words)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    unlink(Bench::kLogPath);
    return 0;
}
