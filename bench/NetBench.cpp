// The HTTP engine against a loopback server, beside the curl command line doing the same work:
// 1,000 small GETs (curl with --parallel) and one 200 MB download saved to a file.
//
// On a shared machine the load changes from one benchmark to the next: compare the engine with
// curl from runs whose repetitions are interleaved, and read the medians:
//   --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true
//   --benchmark_report_aggregates_only=true
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include <benchmark/benchmark.h>
#include <httplib.h>
#undef DELETE // the resolver's headers, pulled in by the server, define it

#include "LocalHttpServer.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/net/VPHTTPClient.h"

using namespace velmo;

namespace {

constexpr int kSmallRequests = 1000;
constexpr std::size_t kSmallBody = 256;
constexpr std::size_t kBigBody = 200u * 1024 * 1024;

// One server for the whole run.
class Server {
public:
    static Server& shared() {
        static Server server;
        return server;
    }
    std::string url(const std::string& path) const { return server_.baseURL() + path; }
    const std::filesystem::path& folder() const { return folder_; }

private:
    Server() : folder_(Files::makeTemporaryDirectory("velmo-bench-net")) {
        // One worker per connection: room for the client's and curl's connections together, and
        // idle ones let go after a second, so that no run waits for the previous run's connections.
        // The test server widens the listening backlog: the library's own, 5, drops the connections
        // of a burst beyond it, whose clients then retry a second later, and both the client's and
        // curl's times at 64 in flight were mostly that second.
        httplib::Server& http = server_.server();
        http.new_task_queue = [] { return new httplib::ThreadPool(200); };
        http.set_keep_alive_timeout(1);
        http.set_keep_alive_max_count(100000);
        http.set_tcp_nodelay(true); // a head and a body in two writes must not wait for an ACK
        http.Get("/small", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(std::string(kSmallBody, 's'), "application/octet-stream");
        });
        http.Get("/big", [](const httplib::Request&, httplib::Response& res) {
            res.set_content_provider(kBigBody, "application/octet-stream",
                                     [](std::size_t, std::size_t length, httplib::DataSink& sink) {
                                         static const std::string piece(256 * 1024, 'b');
                                         return sink.write(piece.data(), std::min(length, piece.size()));
                                     });
        });
        server_.start();
        SystemLog::setSink([](std::string_view) {}); // one log line per request would time the terminal
    }
    ~Server() {
        server_.stop();
        std::filesystem::remove_all(folder_);
    }

    test::LocalHttpServer server_;
    std::filesystem::path folder_;
};

// Lets the connections of the benchmark before close, so that each starts on an idle server.
void settle() {
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
}

void runCurl(benchmark::State& state, const std::string& arguments) {
    const std::string command = "curl --silent --show-error --no-progress-meter " + arguments;
    if (std::system(command.c_str()) != 0) state.SkipWithError("curl failed");
}

// The argument is the number of requests in flight: the client's queue width, curl's --parallel-max.
void ClientSmallGets(benchmark::State& state) {
    Server& server = Server::shared();
    settle();
    auto client = std::make_shared<VPHTTPClient>();
    client->setBasePath(server.url(""));
    client->operationQueue().setMaxConcurrentOperationCount(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        int done = 0;
        int failed = 0;
        for (int i = 0; i < kSmallRequests; ++i) {
            client->GET("/small", Value(),
                        [&](const Value&, std::shared_ptr<HTTPURLResponse>, VPErrorPtr error) {
                            ++done;
                            if (error) ++failed;
                        });
        }
        runMainLoopUntil([&] { return done == kSmallRequests; }, std::chrono::minutes(2));
        if (done != kSmallRequests || failed != 0) state.SkipWithError("requests failed");
    }
    state.counters["requests/s"] =
        benchmark::Counter(kSmallRequests, benchmark::Counter::kIsIterationInvariantRate);
}

void CurlParallelSmallGets(benchmark::State& state) {
    Server& server = Server::shared();
    settle();
    const auto config = server.folder() / "small.curl";
    {
        std::ofstream out(config);
        for (int i = 0; i < kSmallRequests; ++i)
            out << "url = \"" << server.url("/small") << "\"\noutput = \"/dev/null\"\n";
    }
    const std::string arguments =
        "--parallel --parallel-max " + std::to_string(state.range(0)) + " --config " + config.string();
    for (auto _ : state)
        runCurl(state, arguments);
    state.counters["requests/s"] =
        benchmark::Counter(kSmallRequests, benchmark::Counter::kIsIterationInvariantRate);
}

void ClientDownloadToFile(benchmark::State& state) {
    Server& server = Server::shared();
    settle();
    auto client = std::make_shared<VPHTTPClient>();
    const std::string path = (server.folder() / "client.bin").string();
    for (auto _ : state) {
        bool done = false;
        VPErrorPtr failure;
        client->GET(server.url("/big"), Value(), path, nullptr,
                    [&](const Value&, std::shared_ptr<HTTPURLResponse>, VPErrorPtr error) {
                        failure = std::move(error);
                        done = true;
                    });
        runMainLoopUntil([&] { return done; }, std::chrono::minutes(5));
        if (!done || failure || std::filesystem::file_size(path) != kBigBody)
            state.SkipWithError("download failed");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBigBody));
}

void CurlDownloadToFile(benchmark::State& state) {
    Server& server = Server::shared();
    settle();
    const std::string path = (server.folder() / "curl.bin").string();
    for (auto _ : state)
        runCurl(state, "--output " + path + " " + server.url("/big"));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBigBody));
}

} // namespace

// 64 is the client's default width.
BENCHMARK(ClientSmallGets)->Arg(64)->Arg(8)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(CurlParallelSmallGets)
    ->Arg(64)
    ->Arg(8)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);
BENCHMARK(ClientDownloadToFile)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(CurlDownloadToFile)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

BENCHMARK_MAIN();
