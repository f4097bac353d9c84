// Transitions of a screen of 2,000 views with 20 states, each state touching 100 paths: building
// 200 transitions between them, and recomputing those that touch one state after it was edited.
// The recomputation should cost in proportion to the transitions that touch the state: the
// second run adds 1,800 transitions between the other states, and should take about as long.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "support/ViewTreeGenerator.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelView.h"

namespace {

using namespace velmo;

constexpr std::size_t kViews = 2'000;
constexpr std::size_t kStates = 20;
constexpr std::size_t kPathsPerState = 100;

struct Screen {
    Screen() : owner(bench::generateViewTree(kViews)), host(VVHostTree::attach(owner)) {
        std::vector<std::string> paths;
        bench::forEachDescendant(
            *owner, [&](VDModelView& view) { paths.push_back(owner->relativePathToModel(view)); });
        for (std::size_t s = 0; s < kStates; ++s) {
            Dictionary overrides = Dictionary::create(kPathsPerState);
            for (std::size_t p = 0; p < kPathsPerState; ++p) {
                // A spread of paths that overlaps between neighbouring states.
                const std::string& path = paths[(s * 37 + p * 13) % paths.size()];
                overrides.set(path, Value(Dictionary{{"x", Value(float(s + p))}, {"alpha", Value(0.5f)}}));
            }
            auto state = owner->addStateWithSuggestedName("state");
            state->setOverrides(overrides);
            states.push_back(state);
        }
    }

    // Ten transitions from each state to the next ten; then, for `extra`, transitions among the
    // states other than the first, which the edited first state doesn't touch.
    void addTransitions(std::size_t extra) {
        Array actions = Array::create(200 + extra);
        for (std::size_t from = 0; from < kStates; ++from) {
            for (std::size_t step = 1; step <= 10; ++step)
                actions.push_back(Value(transition(from, (from + step) % kStates)));
        }
        for (std::size_t n = 0; n < extra; ++n) {
            const std::size_t from = 1 + n % (kStates - 1),
                              to = 1 + (n / (kStates - 1) + from) % (kStates - 1);
            actions.push_back(Value(transition(from, to == from ? 1 + to % (kStates - 1) : to)));
        }
        owner->setActions(actions);
    }

    std::shared_ptr<VDModelActionScriptAnimation> transition(std::size_t from, std::size_t to) {
        return VDModelActionScriptAnimation::newScriptAnimationFromState(states[from].get(), states[to].get(),
                                                                         *owner);
    }

    std::shared_ptr<VDModelView> owner;
    std::shared_ptr<VVHostTree> host;
    std::vector<std::shared_ptr<VDModelViewState>> states;
};

void BM_BuildTransitions(benchmark::State& s) {
    Screen screen;
    for (auto _ : s)
        screen.addTransitions(0);
}

void BM_UpdateAfterStateEdit(benchmark::State& s) {
    Screen screen;
    screen.addTransitions(static_cast<std::size_t>(s.range(0)) - 200);
    const auto& edited = screen.states.front();
    float x = 0;
    for (auto _ : s) {
        s.PauseTiming();
        Dictionary overrides = edited->overrides().copy();
        overrides.set(overrides.begin()->key.stringView(), Value(Dictionary{{"x", Value(x += 1)}}));
        edited->setOverrides(overrides);
        s.ResumeTiming();
        screen.owner->updateAllAnimationsForState(edited.get());
    }
    s.counters["touching"] = static_cast<double>(screen.owner->animationsFromState(edited.get()).size() +
                                                 screen.owner->animationsToState(edited.get()).size());
}

} // namespace

BENCHMARK(BM_BuildTransitions)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UpdateAfterStateEdit)->Arg(200)->Arg(2'000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
