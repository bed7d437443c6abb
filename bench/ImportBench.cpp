#include "bench/GeneratedRules.h"
#include "platform/Log.h"
#include "tests/support/TestDocument.h"
#include "workflow/RuleImport.h"
#include "workflow/RunState.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <unistd.h>

// An import of every rule of an exchange file into an empty configuration and into one that has them all:
// passes the rules one by one, writes the file and reads it again. The counter "times_a_load" is relative to
// reading the exchange file; "handing_over" is the part of the time spent in importRule().

namespace {

using namespace quorvane;
namespace fs = std::filesystem;

double secondsOf(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A sandbox configuration and an exchange file.
class Sandbox {
public:
    Sandbox(std::size_t rules, bool oneGroup)
    {
        fs::create_directories(locations.sharedFolder());
        std::ofstream(exchangeFile, std::ios::binary)
            << bench::generatedRules(rules, oneGroup ? 1 : std::max<std::size_t>(rules / 200, 1));
    }
    ~Sandbox() { fs::remove_all(root); }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    const std::string root = "/tmp/quorvane-bench-" + std::to_string(getpid());
    const platform::Locations locations{root, "bench"};
    const std::string exchangeFile = root + "/rules.quorv";
};

void importAll(benchmark::State& state, bool isThereAlready)
{
    const Sandbox sandbox(static_cast<std::size_t>(state.range(0)), state.range(1) == 1);
    platform::Log log({});
    std::unique_ptr<rules::RuleManager> exchange;
    double load = HUGE_VAL; // the best of several
    for (int time = 0; time < 5; ++time) {
        exchange.reset();
        load = std::min(load, secondsOf([&] {
            exchange = rules::RuleManager::initWithContentsOfFile(
                sandbox.exchangeFile, false, sandbox.locations, log);
            benchmark::DoNotOptimize(exchange->totalRules(false));
        }));
    }
    double handingOver = 0;
    double whole = 0;
    for (auto _ : state) {
        state.PauseTiming();
        if (isThereAlready)
            exchange->writeToFile(sandbox.locations.userRulesFile());
        else
            fs::remove(sandbox.locations.userRulesFile());
        const auto store = rules::RuleManager::initWithCurrentUserConfiguration(sandbox.locations, log);
        workflow::RunState run;
        state.ResumeTiming();
        test::TestDocument document(*store, run);
        workflow::RuleImport import(document);
        import.begin(sandbox.exchangeFile);
        handingOver += secondsOf([&] {
            const std::size_t total = exchange->totalRules(false);
            for (std::size_t row = 0; row < total; ++row)
                import.importRule(exchange->ruleAtIndex(row, false));
        });
        whole += secondsOf([&] { import.didFinishImportingRules(); });
    }
    whole += handingOver;
    state.counters["times_a_load"] = whole / static_cast<double>(state.iterations()) / load;
    state.counters["handing_over"] = handingOver / whole;
}

void importNewRules(benchmark::State& state)
{
    importAll(state, false);
}

void importKnownRules(benchmark::State& state)
{
    importAll(state, true);
}

const std::vector<std::vector<std::int64_t>> sizes{{10000, 100000, 1000000}, {0, 1}};
BENCHMARK(importNewRules)
    ->ArgsProduct(sizes)
    ->ArgNames({"rules", "one_group"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(importKnownRules)
    ->ArgsProduct(sizes)
    ->ArgNames({"rules", "one_group"})
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
