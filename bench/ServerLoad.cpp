// Requests a second over 64 connections, and the CPU of a notification to 64 clients, each against as little
// as a server can do, in the same run and by turns.

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include "JsonRpc/TcpServer.h"
#include "bench/ConnectedMethod.h"
#include "bench/Load.h"

namespace {

constexpr int kBlocks = 15;
constexpr int kRoundsPerBlock = 200;

class Ours {
  public:
    Ours() {
        kServerThread.Assert();
        m_method.AddTo(m_tcp);
        if (!m_tcp.Bind() || !m_tcp.Listen()) {
            Die("server");
        }
        port = m_tcp.GetPort();
    }
    void Accept() {
        while (m_tcp.GetClients().size() < kClients) {
            Step();
        }
    }
    void Step() {
        kServerThread.Assert();
        m_tcp.WaitMessage(10);
    }
    void Broadcast() { m_tcp.Broadcast(kNotification); }

    std::uint16_t port = 0;

  private:
    ConnectedMethod m_method;
    Json::Rpc::TcpServer m_tcp{"127.0.0.1", 0};
};

/// A server of either kind with its clients.
template <typename Server>
class Bench {
  public:
    Bench() : m_clients(m_server.port) { m_server.Accept(); }

    void MeasureRequests() {
        std::atomic<bool> done{false};
        double cpu = 0;
        std::thread server([&] {
            const double before = ThreadCpuMicroseconds();
            while (!done) {
                m_server.Step();
            }
            cpu = ThreadCpuMicroseconds() - before;
        });
        rates.push_back(m_clients.Ask());
        done = true;
        server.join();
        costs.push_back(cpu / (rates.back() * std::chrono::duration<double>(kBlockTime).count()));
    }

    void MeasureFanOut() {
        for (int i = 0; i < kRoundsPerBlock; ++i) {
            const double before = ThreadCpuMicroseconds();
            m_server.Broadcast();
            fanOuts.push_back(ThreadCpuMicroseconds() - before);
            m_clients.Drain();
        }
    }

    std::vector<double> rates;
    std::vector<double> costs;
    std::vector<double> fanOuts;

  private:
    Server m_server;
    Clients m_clients;
};

}  // namespace

int main() {
    Bench<Floor> floor;
    Bench<Ours> ours;
    for (int block = 0; block < kBlocks; ++block) {
        floor.MeasureRequests();
        ours.MeasureRequests();
        floor.MeasureFanOut();
        ours.MeasureFanOut();
    }
    const auto print = [](const char* what, double floorValue, double value) {
        std::printf("%-44s %9.1f %9.1f %7.2f\n", what, floorValue, value, value / floorValue);
    };
    std::printf("%-44s %9s %9s %7s\n", "", "floor", "server", "ratio");
    print("requests a second, 64 connections", Median(floor.rates), Median(ours.rates));
    print("server thread's CPU a request, us", Median(floor.costs), Median(ours.costs));
    print("CPU of a notification to 64 clients, us", Median(floor.fanOuts), Median(ours.fanOuts));
    return 0;
}
