// Zipping and unzipping a generated tree (2,000 files, 200 MB, half text, half random bytes)
// through VPZipArchive, beside Info-ZIP's zip -r and unzip at the same level (6). Times are
// wall-clock: Info-ZIP runs as a child process.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "velmo/archive/VPZipArchive.h"
#include "velmo/foundation/Files.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFiles = 2000;
constexpr std::size_t kTotalBytes = 200u * 1000 * 1000;
constexpr int kLevel = 6;

/// The tree and its scratch space, made once for the whole run and removed at exit.
class Workspace {
public:
    static Workspace& shared() {
        static Workspace workspace;
        return workspace;
    }
    ~Workspace() {
        std::error_code ec;
        fs::remove_all(root_, ec);
    }

    const fs::path& root() const { return root_; }
    fs::path tree() const { return root_ / "tree"; }
    /// An archive made by Info-ZIP, which both unzip benchmarks read.
    fs::path referenceArchive() {
        const fs::path archive = root_ / "reference.zip";
        if (!fs::exists(archive))
            run("cd '" + tree().string() + "' && zip -q -r -" + std::to_string(kLevel) + " '" +
                archive.string() + "' .");
        return archive;
    }

    /// A folder name not used before in this run. Unpacked trees stay until the end: files made
    /// just after thousands were deleted cost the filesystem far more to create, which would
    /// measure the deleting, not the unpacking.
    fs::path freshFolder(const std::string& prefix) { return root_ / (prefix + std::to_string(++folders_)); }

    static void run(const std::string& command) {
        if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
    }

private:
    Workspace() : root_(velmo::Files::makeTemporaryDirectory("velmo-archive-bench")) { generate(); }

    void generate() const {
        static const std::array<const char*, 12> words = {"screen",    "view",  "state",  "transition",
                                                          "layer",     "frame", "button", "shadow",
                                                          "prototype", "font",  "color",  "release"};
        std::mt19937_64 random(42);
        const std::size_t perFile = kTotalBytes / kFiles;
        std::string buffer;
        for (int i = 0; i < kFiles; ++i) {
            const fs::path file = tree() / ("dir" + std::to_string(i % 40)) /
                                  ("sub" + std::to_string(i % 7)) /
                                  ("file" + std::to_string(i) + (i % 2 ? ".bin" : ".txt"));
            fs::create_directories(file.parent_path());
            buffer.clear();
            if (i % 2) {
                while (buffer.size() < perFile) {
                    const std::uint64_t bits = random();
                    buffer.append(reinterpret_cast<const char*>(&bits), sizeof bits);
                }
            } else {
                while (buffer.size() < perFile) {
                    buffer += words[random() % words.size()];
                    buffer += random() % 9 ? ' ' : '\n';
                }
            }
            buffer.resize(perFile);
            std::ofstream(file, std::ios::binary)
                .write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        }
    }

    fs::path root_;
    int folders_ = 0;
};

void reportSizes(benchmark::State& state, const fs::path& archive) {
    state.counters["archive_MB"] = static_cast<double>(fs::file_size(archive)) / 1e6;
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kTotalBytes));
}

void BM_Zip_VPZipArchive(benchmark::State& state) {
    Workspace& w = Workspace::shared();
    const fs::path archive = w.root() / "vp.zip";
    for (auto _ : state) {
        if (!velmo::VPZipArchive::createZipFileAtPathWithContentsOfDirectory(
                archive.string(), w.tree().string(), false, kLevel, "", true, {})) {
            state.SkipWithError("zipping failed");
        }
    }
    reportSizes(state, archive);
}

void BM_Zip_InfoZip(benchmark::State& state) {
    Workspace& w = Workspace::shared();
    const fs::path archive = w.root() / "infozip.zip";
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(archive);
        state.ResumeTiming();
        Workspace::run("cd '" + w.tree().string() + "' && zip -q -r -" + std::to_string(kLevel) + " '" +
                       archive.string() + "' .");
    }
    reportSizes(state, archive);
}

void BM_Unzip_VPZipArchive(benchmark::State& state) {
    Workspace& w = Workspace::shared();
    const fs::path archive = w.referenceArchive();
    for (auto _ : state) {
        const fs::path out = w.freshFolder("vp-out");
        if (!velmo::VPZipArchive::unzipFileAtPath(archive.string(), out.string()))
            state.SkipWithError("unzipping failed");
    }
    reportSizes(state, archive);
}

void BM_Unzip_InfoZip(benchmark::State& state) {
    Workspace& w = Workspace::shared();
    const fs::path archive = w.referenceArchive();
    for (auto _ : state) {
        const fs::path out = w.freshFolder("infozip-out");
        Workspace::run("unzip -q -o '" + archive.string() + "' -d '" + out.string() + "'");
    }
    reportSizes(state, archive);
}

} // namespace

BENCHMARK(BM_Zip_VPZipArchive)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_Zip_InfoZip)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_Unzip_VPZipArchive)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_Unzip_InfoZip)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

BENCHMARK_MAIN();
