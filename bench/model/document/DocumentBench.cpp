// Whole documents of 50 and 500 screens as an export leaves them (every kind of view, a component
// on every screen, the shapes of older documents; see the generator): JSON text to a document
// through `VDModelApp::appWithDictionary` (the identifier registry built at its end), beside
// nlohmann::json parsing the same bytes, and the two halves of the decode apart; each repair a
// host runs after decoding, alone and all in a row, on a freshly decoded document; the document's
// compact JSON; a copy of one screen with its new identifiers; and 10,000 new identifiers, and
// 1,000 after half the screens went.
// Decoding should take no longer than the generic parse; no repair should cost more than the
// decode, and each should grow with the document, no faster; the copy and the new identifiers
// should cost the same at either size.
#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/DocumentGenerator.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/document/VDModelApp.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/view/VDModelView.h"

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
    // A model that can't be encoded gives empty text, which would time nothing.
    if (bytes == 0) state.SkipWithError("the document didn't encode");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

// ---------------------------------------------------------------- repairs

// What a host runs on each component view after decoding: a view with a timeline among the
// screens and the masters, or below them.
void upgradeComponents(VDModelApp& app) {
    for (const Array& roots : {app.screens(), app.components()}) {
        for (const Value& v : roots) {
            const auto root = v.objectAs<VDModelView>();
            if (!root) continue;
            std::vector<std::shared_ptr<VDModelView>> views;
            if (root->timelineType()) views.push_back(root);
            for (const Value& nested : root->nestedComponents())
                views.push_back(nested.objectAs<VDModelView>());
            for (const auto& view : views) {
                view->migrateStateZero();
                view->updateBackwardCompatibility();
                view->validateDefaultStateName();
            }
        }
    }
}

void fixAfterExport(VDModelApp& app) {
    app.fixModelAfterSketchExport();
}
void enforceNames(VDModelApp& app) {
    app.enforceChildrenNamesDistinctFromParents();
}
void markForms(VDModelApp& app) {
    app.markFormsAccordingToSubmitButtons();
}
void fillNames(VDModelApp& app) {
    app.fillMissingVarNamesRecursive();
}

// All of them on one document: the component upgrades and the export repair first, as a host runs
// them after decoding, then the passes on names and forms.
void repairAll(VDModelApp& app) {
    upgradeComponents(app);
    fixAfterExport(app);
    enforceNames(app);
    markForms(app);
    fillNames(app);
}

// Each run repairs a document decoded for it outside the timing, and lets it go outside the
// timing too: a repair changes what it runs on. The decodes make runs dear, so they are fixed
// in number.
template <void (*Repair)(VDModelApp&)> void BM_Repair(benchmark::State& state) {
    const Dictionary parsed = Json::parse(appText(screensOf(state))).dictionary();
    for (auto _ : state) {
        state.PauseTiming();
        auto app = std::dynamic_pointer_cast<VDModelApp>(VDModelApp::appWithDictionary(parsed));
        state.ResumeTiming();
        Repair(*app);
        state.PauseTiming();
        app.reset();
        state.ResumeTiming();
    }
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

// The same after the first half of the screens went: the views that stay hold numbers above
// the group's size, where the search for a free number starts. Fewer identifiers: each is dear.
constexpr int kIdentifiersAfterRemoval = 1'000;

void BM_NewIdentifiersAfterRemoval(benchmark::State& state) {
    const auto app = decodeApp(appText(screensOf(state)));
    const Array& screens = app->screens();
    Array kept = Array::create(screens.size() / 2 + 1);
    for (std::size_t i = screens.size() / 2; i < screens.size(); ++i)
        kept.push_back(screens[i]);
    app->setScreens(kept);
    for (auto _ : state) {
        state.PauseTiming();
        app->updateModelIDsMap();
        state.ResumeTiming();
        for (int i = 0; i < kIdentifiersAfterRemoval; ++i)
            app->addItemID(app->generateUniqueIDForClass(VDModelView::classObject()));
    }
    state.SetItemsProcessed(state.iterations() * kIdentifiersAfterRemoval);
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
// Fewer runs of the large document: each needs a decode of its own.
#define REPAIR_BENCHMARK(repair)                                                                             \
    BENCHMARK(BM_Repair<repair>)                                                                             \
        ->Name("BM_Repair/" #repair)                                                                         \
        ->Arg(50)                                                                                            \
        ->Iterations(10)                                                                                     \
        ->Unit(benchmark::kMillisecond);                                                                     \
    BENCHMARK(BM_Repair<repair>)                                                                             \
        ->Name("BM_Repair/" #repair)                                                                         \
        ->Arg(500)                                                                                           \
        ->Iterations(3)                                                                                      \
        ->Unit(benchmark::kMillisecond)
REPAIR_BENCHMARK(upgradeComponents);
REPAIR_BENCHMARK(fixAfterExport);
REPAIR_BENCHMARK(enforceNames);
REPAIR_BENCHMARK(markForms);
REPAIR_BENCHMARK(fillNames);
REPAIR_BENCHMARK(repairAll);
BENCHMARK(BM_CopyScreen)->Arg(50)->Arg(500)->Iterations(kRegistryRuns)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NewIdentifiers)->Arg(50)->Arg(500)->Iterations(kRegistryRuns)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NewIdentifiersAfterRemoval)
    ->Arg(50)
    ->Arg(500)
    ->Iterations(kRegistryRuns)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CreateInstances)->Arg(50)->Arg(500)->Iterations(kRegistryRuns)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
