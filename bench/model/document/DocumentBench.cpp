// Whole documents of 50 and 500 screens, each screen with 100 views, 2 states and 2 transitions:
// JSON text to a document through `VDModelApp::appWithDictionary` (the identifier registry built
// at its end), beside nlohmann::json parsing the same bytes, and the two halves of the decode
// apart; the document's compact JSON; a copy of one screen with its new identifiers; and 10,000
// new identifiers. Decoding should take no longer than the generic parse; the copy and the new
// identifiers should cost the same at either size.
#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <map>
#include <memory>
#include <string>

#include "support/DocumentGenerator.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/document/VDModelApp.h"
#include "velmo/model/interaction/VDModelEventListener.h"

namespace {

using namespace velmo;

constexpr int kNewIdentifiers = 10'000;

const std::string& appText(std::size_t screens) {
    static std::map<std::size_t, std::string> cache;
    auto& text = cache[screens];
    if (text.empty()) text = bench::generateAppJson({.screens = screens});
    return text;
}

std::shared_ptr<VDModelApp> decodeApp(const std::string& text) {
    return std::dynamic_pointer_cast<VDModelApp>(
        VDModelApp::appWithDictionary(Json::parse(text).dictionary()));
}

std::size_t screensOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

void BM_DecodeApp(benchmark::State& state) {
    const std::string& text = appText(screensOf(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeApp(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_NlohmannParseApp(benchmark::State& state) {
    const std::string& text = appText(screensOf(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::parse(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

// The decode's first half: text to plain values.
void BM_ParseAppValue(benchmark::State& state) {
    const std::string& text = appText(screensOf(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(Json::parse(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

// The second half: plain values to models, and the registry.
void BM_AppWithDictionary(benchmark::State& state) {
    const Dictionary parsed = Json::parse(appText(screensOf(state))).dictionary();
    for (auto _ : state)
        benchmark::DoNotOptimize(VDModelApp::appWithDictionary(parsed));
}

void BM_AppToJson(benchmark::State& state) {
    const auto app = decodeApp(appText(screensOf(state)));
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string json = app->toJson();
        bytes = json.size();
        benchmark::DoNotOptimize(json.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

// Each run starts from the registry of the document as decoded, rebuilt outside the timing, so
// that what earlier runs entered doesn't pile up: the runs are fixed in number for that reason.
constexpr int kRegistryRuns = 30;

void BM_CopyScreen(benchmark::State& state) {
    const auto app = decodeApp(appText(screensOf(state)));
    const auto screen = app->screens()[app->screens().size() / 2].objectAs<VDModel>();
    std::int64_t models = 0;
    for (auto _ : state) {
        state.PauseTiming();
        app->updateModelIDsMap();
        state.ResumeTiming();
        auto copy = app->createCopyOfModel(screen);
        state.PauseTiming();
        models = 0;
        copy->enumerateModelsWithBlock([&](const std::shared_ptr<VDModel>&) { ++models; });
        copy.reset();
        state.ResumeTiming();
    }
    state.counters["models"] = static_cast<double>(models);
}

// In the largest group, "View", which holds every view of the document.
void BM_NewIdentifiers(benchmark::State& state) {
    const auto app = decodeApp(appText(screensOf(state)));
    std::size_t group = 0;
    for (auto _ : state) {
        state.PauseTiming();
        app->updateModelIDsMap();
        group = app->existingIDsByPrefix().get("View").array().size();
        state.ResumeTiming();
        for (int i = 0; i < kNewIdentifiers; ++i)
            app->addItemID(app->generateUniqueIDForClass(VDModelView::classObject()));
    }
    state.SetItemsProcessed(state.iterations() * kNewIdentifiers);
    state.counters["group"] = static_cast<double>(group);
}

// A small class, made with its identifier and entered.
void BM_CreateInstances(benchmark::State& state) {
    const auto app = decodeApp(appText(screensOf(state)));
    for (auto _ : state) {
        state.PauseTiming();
        app->updateModelIDsMap();
        state.ResumeTiming();
        for (int i = 0; i < kNewIdentifiers; ++i)
            benchmark::DoNotOptimize(app->createInstanceOfModelClass(VDModelEventListener::classObject()));
    }
    state.SetItemsProcessed(state.iterations() * kNewIdentifiers);
}

} // namespace

BENCHMARK(BM_DecodeApp)->Arg(50)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NlohmannParseApp)->Arg(50)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseAppValue)->Arg(50)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AppWithDictionary)->Arg(50)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AppToJson)->Arg(50)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyScreen)->Arg(50)->Arg(500)->Iterations(kRegistryRuns)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NewIdentifiers)->Arg(50)->Arg(500)->Iterations(kRegistryRuns)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CreateInstances)->Arg(50)->Arg(500)->Iterations(kRegistryRuns)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
