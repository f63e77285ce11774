// A request's text to its reply's, beside what the JSON library alone takes to read and write the same; a log
// entry, beside the write of as many bytes; base64.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <json/reader.h>
#include <json/writer.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "ServiceUtil/Base64.h"
#include "ServiceUtil/Descriptor.h"
#include "ServiceUtil/Logger.h"
#include "bench/parts/Service.h"

namespace Bench {
namespace {

constexpr const char* kConnected = "{\"jsonrpc\":\"2.0\",\"method\":\"isIpodConnected\",\"id\":1}";
constexpr const char* kTrackInfo = "{\"jsonrpc\":\"2.0\",\"method\":\"getCurrentTrackInfo\",\"id\":1}";

void Execute(benchmark::State& state, const char* request) {
    Service& service = Service::Instance();
    for (auto _ : state) {
        benchmark::DoNotOptimize(service.Execute(request));
    }
    EmptyLog();
}

/// The request is read into a tree, and the reply, a tree, is copied and written.
void ReadAndWrite(benchmark::State& state, const char* request) {
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    const std::string text(request);
    const std::string replyText = Service::Instance().Execute(text);
    Json::Value reply;
    reader->parse(replyText.data(), replyText.data() + replyText.size(), &reply, nullptr);
    for (auto _ : state) {
        Json::Value value;
        reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
        benchmark::DoNotOptimize(Json::FastWriter().write(Json::Value(reply)));
#pragma GCC diagnostic pop
    }
}

void WriteEntry(benchmark::State& state) {
    Service::Instance();
    for (auto _ : state) {
        LOG_INFO("Sending ipod track paused Notification: %d\n", 1);
    }
    EmptyLog();
}

void WriteBytes(benchmark::State& state) {
    const std::string entry(96, 'x');  // about as long as the entry above
    const Descriptor file(open(kLogPath, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(file.Get(), entry.data(), entry.size()));
    }
    EmptyLog();
}

void DropEntry(benchmark::State& state) {
    Service::Instance();
    for (auto _ : state) {
        CLogger::Log(__FILE__, __LINE__, LogLevel::kTrace, "Sending ipod track paused Notification: %d\n", 1);
    }
}

void Encode(benchmark::State& state) {
    const std::vector<std::uint8_t> bytes(1 << 20, 0x5A);
    for (auto _ : state) {
        std::string text;
        AppendBase64(text, bytes);
        benchmark::DoNotOptimize(text);
    }
}

BENCHMARK_CAPTURE(Execute, connected, kConnected)->Name("execute-connected");
BENCHMARK_CAPTURE(ReadAndWrite, connected, kConnected)->Name("execute-connected/floor");
BENCHMARK_CAPTURE(Execute, info, kTrackInfo)->Name("execute-track-info");
BENCHMARK_CAPTURE(ReadAndWrite, info, kTrackInfo)->Name("execute-track-info/floor");
BENCHMARK(WriteEntry)->Name("log-entry");
BENCHMARK(WriteBytes)->Name("log-entry/floor");
BENCHMARK(DropEntry)->Name("log-dropped");
BENCHMARK(Encode)->Name("base64");

}  // namespace
}  // namespace Bench
