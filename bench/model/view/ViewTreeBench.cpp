// A document's view tree: JSON text to models, models to JSON, and a copy of the root, beside a
// generic DOM parse (nlohmann::json) of the same bytes; and the host's tree over many siblings,
// whose cost must grow linearly (100,000 siblings at most about ten times 10,000).
#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "support/DocumentGenerator.h"
#include "velmo/foundation/Json.h"
#include "velmo/host/VVHostTree.h"
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

// One screen holding every view as its direct subview.
const std::string& siblingsDocument(std::size_t views) {
    static std::map<std::size_t, std::string> cache;
    auto& text = cache[views];
    if (text.empty())
        text = velmo::bench::generateDocumentJson({.views = views + 1, .depth = 2, .fanOut = views});
    return text;
}

// Views made directly, fresh for each run as a decoded document's are: one screen holding them all.
std::shared_ptr<velmo::VDModelView> siblingsTree(std::size_t views) {
    velmo::Array subviews = velmo::Array::create(views);
    for (std::size_t i = 0; i < views; ++i) {
        auto view = velmo::VDModelView::create();
        view->setVariableID("view" + std::to_string(i));
        subviews.push_back(velmo::Value(view));
    }
    auto screen = velmo::VDModelView::create();
    screen->setVariableID("screen");
    screen->setSubviews(subviews);
    auto root = velmo::VDModelView::create();
    root->setSubviews(velmo::Array{velmo::Value(screen)});
    return root;
}

// What `velmo tree` does per view once the document is decoded: attach the host's tree, then
// each view's path, which climbs the tree's parent index; and the detaching when it ends.
void BM_HostTreeSiblings(benchmark::State& state) {
    const auto views = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto root = siblingsTree(views);
        const auto screen = root->subviews().first().objectAs<velmo::VDModelView>();
        state.ResumeTiming();
        {
            const auto tree = velmo::VVHostTree::attachDocument(root);
            std::size_t length = 0;
            for (const velmo::Value& v : screen->subviews())
                length += v.objectAs<velmo::VDModelView>()->viewPath().size();
            benchmark::DoNotOptimize(length);
        }
        state.PauseTiming();
        root.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Decoding alone, for comparison with the whole command below.
void BM_DecodeSiblings(benchmark::State& state) {
    const std::string& text = siblingsDocument(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(decode(text));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The whole of `velmo tree` but the printing: decode, attach, every path.
void BM_TreeCommandSiblings(benchmark::State& state) {
    const std::string& text = siblingsDocument(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        const auto root = std::dynamic_pointer_cast<velmo::VDModelView>(decode(text));
        const auto tree = velmo::VVHostTree::attachDocument(root);
        std::size_t length = 0;
        for (const velmo::Value& v : root->subviews().first().objectAs<velmo::VDModelView>()->subviews())
            length += v.objectAs<velmo::VDModelView>()->viewPath().size();
        benchmark::DoNotOptimize(length);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
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
BENCHMARK(BM_DecodeSiblings)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HostTreeSiblings)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TreeCommandSiblings)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
