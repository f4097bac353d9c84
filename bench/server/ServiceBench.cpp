// The local service under 16 clients at once, each a client of the library's HTTP engine with its
// own user and ten teams, one request in flight each: N project creations, then N listings of a
// team's projects. Sizes 1,000 and 10,000, for the ratio. Counters: requests per second, p50 and
// p99 latency in microseconds (from the request's start to its completion on the main queue), and
// the database's size (file and write-ahead log).
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "server/ServiceServer.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/net/VPHTTPClient.h"

using namespace velmo;
using namespace velmo::server;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kClients = 16;
constexpr int kTeamsPerClient = 10;

struct BenchClient {
    std::shared_ptr<VPHTTPClient> http;
    std::vector<std::string> teams;
    int sent = 0;
};

struct PhaseResult {
    double seconds = 0;
    std::vector<double> latencies; // microseconds
    int failed = 0;
};

/// A fresh service with 16 users, each in ten teams of their own.
class Service {
public:
    Service() : folder_(Files::makeTemporaryDirectory("velmo-bench-service")) {
        ServiceOptions options;
        options.port = 0;
        options.dataFolder = folder_;
        server_ = std::make_unique<ServiceServer>(options);
        server_->bind();
        thread_ = std::thread([this] { server_->serve(); });
        for (int c = 0; c < kClients; ++c) {
            const auto user = server_->store().addUser(fmt::format("user{}@example.com", c), "");
            BenchClient client;
            client.http = std::make_shared<VPHTTPClient>();
            client.http->setSendParametersAsJSON(true);
            client.http->setValue("JWT " + user.token, "Authorization");
            for (int t = 0; t < kTeamsPerClient; ++t) {
                bool created = false;
                client.teams.push_back(
                    server_->store()
                        .addTeam(fmt::format("team-{}-{}", c, t), {user.user.email}, created)
                        .get("id")
                        .str());
            }
            clients_.push_back(std::move(client));
        }
    }
    ~Service() {
        server_->stop();
        thread_.join();
        server_.reset();
        fs::remove_all(folder_);
    }

    /// `total` requests spread evenly over the clients, each sending its next one when the last
    /// one has come back.
    PhaseResult run(int total, bool create) {
        PhaseResult result;
        result.latencies.reserve(static_cast<std::size_t>(total));
        const int each = total / kClients;
        int done = 0;
        for (BenchClient& client : clients_)
            client.sent = 0;
        std::function<void(int)> next = [&](int c) {
            BenchClient& client = clients_[static_cast<std::size_t>(c)];
            if (client.sent == each) return;
            const int i = client.sent++;
            const std::string& team = client.teams[static_cast<std::size_t>(i % kTeamsPerClient)];
            const Clock::time_point start = Clock::now();
            auto completion = [&, c, start](const Value&, auto, VPErrorPtr error) {
                result.latencies.push_back(
                    std::chrono::duration<double, std::micro>(Clock::now() - start).count());
                result.failed += error ? 1 : 0;
                ++done;
                next(c);
            };
            const std::string base = fmt::format("{}/v2/teams/{}/projects", server_->baseURL(), team);
            if (create) {
                client.http->POST(
                    base, Value(Dictionary{{"name", Value(fmt::format("project {}-{}", c, i))}}), completion);
            } else {
                client.http->GET(base + "/", Value(), completion);
            }
        };
        const Clock::time_point start = Clock::now();
        for (int c = 0; c < kClients; ++c)
            next(c);
        runMainLoopUntil([&] { return done == each * kClients; }, std::chrono::minutes(10));
        result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        return result;
    }

    std::uintmax_t databaseBytes() const {
        std::uintmax_t bytes = 0;
        for (const char* suffix : {"", "-wal"}) {
            std::error_code ec;
            const auto size = fs::file_size(folder_ / (std::string(ServiceStore::kFileName) + suffix), ec);
            if (!ec) bytes += size;
        }
        return bytes;
    }

private:
    fs::path folder_;
    std::unique_ptr<ServiceServer> server_;
    std::thread thread_;
    std::vector<BenchClient> clients_;
};

double percentile(std::vector<double> values, double p) {
    if (values.empty()) return 0;
    const auto at = static_cast<std::size_t>(p * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(at), values.end());
    return values[at];
}

void report(benchmark::State& state, const std::string& prefix, const PhaseResult& phase) {
    state.counters[prefix + "_per_s"] = static_cast<double>(phase.latencies.size()) / phase.seconds;
    state.counters[prefix + "_p50_us"] = percentile(phase.latencies, 0.50);
    state.counters[prefix + "_p99_us"] = percentile(phase.latencies, 0.99);
    if (phase.failed > 0)
        state.SkipWithError(fmt::format("{} {} requests failed", phase.failed, prefix).c_str());
}

void BM_Service_CreateThenList(benchmark::State& state) {
    const int total = static_cast<int>(state.range(0));
    SystemLog::setSink([](std::string_view) {});
    for (auto _ : state) {
        state.PauseTiming();
        Service service;
        state.ResumeTiming();
        const PhaseResult created = service.run(total, true);
        const PhaseResult listed = service.run(total, false);
        state.SetIterationTime(created.seconds + listed.seconds);
        state.PauseTiming();
        report(state, "create", created);
        report(state, "list", listed);
        state.counters["db_MB"] = static_cast<double>(service.databaseBytes()) / (1024.0 * 1024.0);
        state.ResumeTiming();
    }
}

} // namespace

BENCHMARK(BM_Service_CreateThenList)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);

BENCHMARK_MAIN();
