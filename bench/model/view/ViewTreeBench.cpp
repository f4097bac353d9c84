// A document's view tree: JSON text to models, models to JSON, and a copy of the root, beside a
// generic DOM parse (nlohmann::json) of the same bytes.
#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "support/DocumentGenerator.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/view/VDModelView.h"

namespace {

const std::string& document(std::size_t views) {
    static std::map<std::size_t, std::string> cache;
    auto& text = cache[views];
    if (text.empty()) text = velmo::bench::generateDocumentJson({.views = views, .depth = 6, .fanOut = 4});
    return text;
}

std::shared_ptr<velmo::VDModel> decode(const std::string& text) {
    return velmo::VDModelDecoder::modelObjectFromDictionary(velmo::Json::parse(text).dictionary());
}

void BM_DecodeModelTree(benchmark::State& state) {
    const std::string& text = document(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(decode(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_NlohmannParse(benchmark::State& state) {
    const std::string& text = document(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::parse(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_EncodeModelTree(benchmark::State& state) {
    auto root = decode(document(static_cast<std::size_t>(state.range(0))));
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string json = velmo::Json::write(velmo::Value(root->toDictionary()));
        bytes = json.size();
        benchmark::DoNotOptimize(json.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_CopyRoot(benchmark::State& state) {
    auto root = decode(document(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(root->copy());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(BM_DecodeModelTree)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NlohmannParse)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeModelTree)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyRoot)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
