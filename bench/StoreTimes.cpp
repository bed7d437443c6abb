#include "platform/Log.h"
#include "rules/RuleManager.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

// store_times FILE TEXT: what a store of FILE takes for each of its large operations, one a line: name, wall
// seconds, processor seconds. bench/compare sets these beside what everyday tools take.

namespace {

using namespace quorvane;

double seconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void time(const char* name, const std::function<void()>& work)
{
    const double wall = seconds(CLOCK_MONOTONIC);
    const double processor = seconds(CLOCK_PROCESS_CPUTIME_ID);
    work();
    std::printf("%s %.4f %.4f\n", name, seconds(CLOCK_MONOTONIC) - wall,
        seconds(CLOCK_PROCESS_CPUTIME_ID) - processor);
}

void addOneByOne(RuleManager& store)
{
    for (int number = 0; number < 100000; ++number) {
        PolicyRuleFields fields;
        fields.path = "/added/" + std::to_string(number);
        fields.processName = "/bin/added";
        store.addPolicyRule(std::make_shared<PolicyRule>(std::move(fields)));
    }
    store.totalRules(true);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::fputs("usage: store_times FILE TEXT\n", stderr);
        return 2;
    }
    Log log({});
    const Locations nowhere("/nonexistent", "bench");
    std::unique_ptr<RuleManager> store;
    time("load", [&] {
        store = RuleManager::initWithContentsOfFile(arguments[1], false, nowhere, log);
        store->totalRules(true);
    });
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak-megabytes %ld 0\n", usage.ru_maxrss / 1024);
    const std::string text = arguments[2];
    const auto filter = [&](std::size_t length) {
        store->applyFilterWithString(text.substr(0, length));
        store->totalRules(true);
    };
    time("filter-first-key", [&] { filter(1); });
    time("filter-typing", [&] { filter(text.size()); });
    time("filter-none", [&] { filter(0); });
    time("sort-path", [&] { store->sortIndexUsingDescriptors({{SortKey::path, true}}); });
    time("sort-class-path", [&] {
        store->sortIndexUsingDescriptors({{SortKey::policyClass, true}, {SortKey::path, false}});
    });
    store->sortIndexUsingDescriptors({});
    std::size_t redundant = 0;
    time("redundancy", [&] {
        for (const PolicyRulePtr& rule : store->policyRules())
            redundant += store->isRedundant(*rule) ? 1U : 0U;
    });
    std::printf("rules %zu %zu\n", store->storedRules(), redundant);
    time("add-100000", [&] { addOneByOne(*store); });
    std::fflush(stdout);
    _exit(0); // a million records need no tidying up
}
