// A view state's change set on a view with many descendants, a tenth of which the state moves:
// the full recording, the update for one changed view, and applying the result. Each should cost
// in proportion to what it touches: the first and last to the tree, the second to the one view.
#include <benchmark/benchmark.h>

#include "support/ViewTreeGenerator.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelView.h"

namespace {

using namespace velmo;

// The document's tree, the same tree as the state shows it (every tenth view moved) and their
// hosts, so paths between views can be taken.
struct Fixture {
    explicit Fixture(std::size_t descendants)
        : original(bench::generateViewTree(descendants)), shaped(modelCopy(original)) {
        std::size_t n = 0;
        bench::forEachDescendant(*shaped, [&](VDModelView& view) {
            if (n++ % 10 != 0) return;
            view.setX(view.x() + 5);
            lastMoved = std::static_pointer_cast<VDModelView>(view.sharedFromThis());
        });
        originalHost = VVHostTree::attach(original);
        shapedHost = VVHostTree::attach(shaped);
        state->updateWithOriginalModel(*original, *shaped);
    }

    std::shared_ptr<VDModelView> original, shaped, lastMoved;
    std::shared_ptr<VVHostTree> originalHost, shapedHost;
    std::shared_ptr<VDModelViewState> state = VDModelViewState::create();
};

void BM_FullUpdate(benchmark::State& s) {
    Fixture f(static_cast<std::size_t>(s.range(0)));
    for (auto _ : s)
        f.state->updateWithOriginalModel(*f.original, *f.shaped);
    s.counters["paths"] = static_cast<double>(f.state->overrides().size());
}

void BM_IncrementalUpdateOfOneView(benchmark::State& s) {
    Fixture f(static_cast<std::size_t>(s.range(0)));
    float x = f.lastMoved->x();
    for (auto _ : s) {
        // A new position each time, so the view's entry changes but its size doesn't.
        f.lastMoved->setX(x += 1);
        f.state->updateWithOriginalModel(*f.original, *f.shaped, *f.lastMoved);
    }
}

void BM_ApplyModelState(benchmark::State& s) {
    Fixture f(static_cast<std::size_t>(s.range(0)));
    for (auto _ : s)
        f.original->applyModelState(*f.state);
}

} // namespace

BENCHMARK(BM_FullUpdate)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IncrementalUpdateOfOneView)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ApplyModelState)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
