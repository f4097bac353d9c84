// The generic machinery: decode, encode and copy of 10,000 models of the test class.
#include <benchmark/benchmark.h>

#include "TestModel.h"
#include "velmo/model/core/VDModelDecoder.h"

namespace {

using velmo::Array;
using velmo::Dictionary;
using velmo::Value;
using velmo::test::VDModelTestModel;

constexpr int kModels = 10'000;

std::vector<std::shared_ptr<VDModelTestModel>> makeModels() {
    velmo::test::registerTestModels();
    std::vector<std::shared_ptr<VDModelTestModel>> models;
    for (int i = 0; i < kModels; ++i) {
        auto m = VDModelTestModel::create();
        m->setTitle("Model number " + std::to_string(i));
        m->setRatio(i / 7.0f);
        m->setCount(i);
        m->setWidth(i * 1.5);
        m->setTags(Array{Value("a"), Value(i)});
        m->setInfo(Dictionary{{"key", Value(i)}, {"flag", Value(true)}});
        m->setChild(VDModelTestModel::create());
        models.push_back(m);
    }
    return models;
}

void BM_Encode(benchmark::State& state) {
    auto models = makeModels();
    for (auto _ : state) {
        for (auto& m : models)
            benchmark::DoNotOptimize(m->toDictionary());
    }
    state.SetItemsProcessed(state.iterations() * kModels);
}

void BM_Decode(benchmark::State& state) {
    auto models = makeModels();
    std::vector<Dictionary> encoded;
    for (auto& m : models)
        encoded.push_back(m->toDictionary());
    for (auto _ : state) {
        for (const auto& d : encoded)
            benchmark::DoNotOptimize(velmo::VDModelDecoder::modelObjectFromDictionary(d));
    }
    state.SetItemsProcessed(state.iterations() * kModels);
}

void BM_Copy(benchmark::State& state) {
    auto models = makeModels();
    for (auto _ : state) {
        for (auto& m : models)
            benchmark::DoNotOptimize(m->copy());
    }
    state.SetItemsProcessed(state.iterations() * kModels);
}

} // namespace

BENCHMARK(BM_Encode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Copy)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
