#include <fstream>
#include <sstream>
#include <vector>

#include "stress/JsonRpcStress.h"

namespace stress {

namespace {

double ResidentMegabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("RssAnon:")) {
            return std::stod(line.substr(8)) / 1024;
        }
    }
    return 0;
}

void CheckRubbish() {
    Server server;
    Client client(server);
    client.RoundTrip();
    const double before = ResidentMegabytes();
    double most = before;
    const std::string line = std::string(99998, 'x') + "\n";
    const std::string inside = "[" + std::string(49999, '!') + "{}" + "]";
    for (int i = 0; i < 500; ++i) {
        client.Send(line + inside + inside);
        client.ReadLines(3);
        most = std::max(most, ResidentMegabytes());
    }
    Claim("100 MB of rubbish move the memory by", most - before, "MB", 8);
    Claim("and a request behind it is answered in", client.RoundTrip(), "ms", 100);
}

void CheckUnfinished() {
    Server server;
    Client other(server);
    other.RoundTrip();
    const double before = ResidentMegabytes();
    double most = 0;
    {
        std::vector<std::unique_ptr<Client>> clients;
        const std::string part = "[\"" + std::string(100000, 'x');
        for (int i = 0; i < 255; ++i) {
            clients.push_back(std::make_unique<Client>(server));
            clients.back()->Send(part);
            most = std::max(most, ResidentMegabytes());
        }
        other.RoundTrip();
        most = std::max(most, ResidentMegabytes());
    }
    server.HasClients(1);
    Claim("255 unfinished requests of 100 kB move the memory by", most - before, "MB", 8);
    Claim("and leave behind", ResidentMegabytes() - before, "MB", 1);
    std::string values = "{\"jsonrpc\":\"2.0\",\"method\":\"ping\",\"id\":1,\"params\":[[]";
    for (int i = 0; i < 16000; ++i) {
        values += ",{}";
    }
    other.Send(values + "]}");
    other.ReadLines(1);
    Claim("a request of 16,000 values leaves behind", ResidentMegabytes() - before, "MB", 2);
}

void CheckLargeAnswer() {
    constexpr std::size_t kSize = 20000000;
    Server server;
    Client client(server, 4096);
    client.RoundTrip();
    const double before = ResidentMegabytes();
    double most = 0;
    client.Send(Fill(kSize));
    for (std::size_t read = 0; read < kSize;) {
        read += client.Read(100000);
        most = std::max(most, ResidentMegabytes());
    }
    server.HasClients(1);
    client.RoundTrip();
    Claim("an answer of 20 MB takes, in texts of its size", (most - before) * 1e6 / kSize, "", 3);
    Claim("and leaves behind", ResidentMegabytes() - before, "MB", 1);
}

}  // namespace

void CheckMemory() {
    CheckRubbish();
    CheckUnfinished();
    CheckLargeAnswer();
}

}  // namespace stress
