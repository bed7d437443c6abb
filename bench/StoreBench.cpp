#include "bench/GeneratedRules.h"
#include "platform/Log.h"
#include "rules/RuleManager.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <memory>

#include <benchmark/benchmark.h>
#include <unistd.h>

// The store's large operations at three sizes, with rules of many applications and of one. Times are per run;
// the counter "per_byte_of_scan" is relative to one scan of the same bytes, since machines differ.

namespace {

using namespace quorvane;

struct Sample {
    std::string file;
    std::string text;
    double scanSeconds = 0;
};

double secondsNow()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

const Sample& sample(std::size_t rules, bool oneGroup)
{
    static std::map<std::pair<std::size_t, bool>, Sample> samples;
    Sample& made = samples[{rules, oneGroup}];
    if (made.text.empty()) {
        made.text = bench::generatedRules(rules, oneGroup ? 1 : std::max<std::size_t>(rules / 200, 1));
        made.file = "/tmp/quorvane-bench-" + std::to_string(getpid()) + ".rc";
        const double start = secondsNow();
        benchmark::DoNotOptimize(std::count(made.text.begin(), made.text.end(), '\n'));
        made.scanSeconds = secondsNow() - start;
    }
    std::ofstream(made.file, std::ios::binary) << made.text;
    return made;
}

platform::Log& silentLog()
{
    static platform::Log log({});
    return log;
}

std::unique_ptr<rules::RuleManager> storeOf(const Sample& from)
{
    return rules::RuleManager::initWithContentsOfFile(
        from.file, false, platform::Locations("/nonexistent", "bench"), silentLog());
}

// Runs `work` on a store of the sample given by the state's ranges.
template <class Work> void benchStore(benchmark::State& state, Work work)
{
    const Sample& from = sample(static_cast<std::size_t>(state.range(0)), state.range(1) == 1);
    const auto store = storeOf(from);
    store->totalRules(true);
    const double start = secondsNow();
    for (auto _ : state)
        work(*store, from);
    const double each = (secondsNow() - start) / static_cast<double>(state.iterations());
    state.counters["times_a_scan"] = each / from.scanSeconds;
    unlink(from.file.c_str());
}

void load(benchmark::State& state)
{
    benchStore(state, [](rules::RuleManager&, const Sample& from) {
        benchmark::DoNotOptimize(storeOf(from)->totalRules(true));
    });
}

void rebuild(benchmark::State& state)
{
    benchStore(state, [](rules::RuleManager& store, const Sample&) {
        store.rebuildRulesCache();
        benchmark::DoNotOptimize(store.totalRules(true));
    });
}

void filterWhileTyping(benchmark::State& state)
{
    benchStore(state, [](rules::RuleManager& store, const Sample&) {
        for (const char* text : {"d", "do", "doc", "docu", "docum"}) {
            store.applyFilterWithString(text);
            benchmark::DoNotOptimize(store.totalRules(true));
        }
    });
}

void sortByPath(benchmark::State& state)
{
    benchStore(state, [](rules::RuleManager& store, const Sample&) {
        store.sortIndexUsingDescriptors({{rules::SortKey::path, true}});
    });
}

void redundancyOfAll(benchmark::State& state)
{
    benchStore(state, [](rules::RuleManager& store, const Sample&) {
        for (const rules::PolicyRulePtr& rule : store.policyRules())
            benchmark::DoNotOptimize(store.isRedundant(*rule));
    });
}

void writeAll(benchmark::State& state)
{
    benchStore(state, [](rules::RuleManager& store, const Sample& from) { store.writeToFile(from.file); });
}

const std::vector<std::vector<std::int64_t>> sizes{{10000, 100000, 1000000}, {0, 1}};
BENCHMARK(load)->ArgsProduct(sizes)->ArgNames({"rules", "one_group"})->Unit(benchmark::kMillisecond);
BENCHMARK(rebuild)->ArgsProduct(sizes)->ArgNames({"rules", "one_group"})->Unit(benchmark::kMillisecond);
BENCHMARK(filterWhileTyping)
    ->ArgsProduct(sizes)
    ->ArgNames({"rules", "one_group"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(sortByPath)->ArgsProduct(sizes)->ArgNames({"rules", "one_group"})->Unit(benchmark::kMillisecond);
BENCHMARK(redundancyOfAll)
    ->ArgsProduct(sizes)
    ->ArgNames({"rules", "one_group"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(writeAll)->ArgsProduct(sizes)->ArgNames({"rules", "one_group"})->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
