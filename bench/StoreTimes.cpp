#include "platform/Log.h"
#include "rules/RuleManager.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

// store_times FILE TEXT: the time of each large operation on a store of FILE, one per line: name, wall
// seconds, processor seconds. bench/compare compares these with standard tools.

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

void addOneByOne(rules::RuleManager& store)
{
    for (int number = 0; number < 100000; ++number) {
        rules::PolicyRuleFields fields;
        fields.path = "/added/" + std::to_string(number);
        fields.processName = "/bin/added";
        store.addPolicyRule(std::make_shared<rules::PolicyRule>(std::move(fields)));
    }
    store.totalRules(true);
}

rules::PolicyRuleFields fieldsAt(const rules::RuleManager& store, std::size_t row)
{
    return std::get<rules::PolicyRulePtr>(store.ruleAtIndex(row, true))->fields();
}

// One change of one rule in the middle of rows sorted by path, until the new rows and the cells of the forty
// in view are available; then the first key of a search.
void editOne(rules::RuleManager& store, const std::string& text)
{
    store.sortIndexUsingDescriptors({{rules::SortKey::path, true}});
    const std::size_t row = store.totalRules(true) / 2;
    const auto look = [&] {
        for (std::size_t shown = row; shown < row + 40 && shown < store.totalRules(true); ++shown)
            store.isRedundant(*std::get<rules::PolicyRulePtr>(store.ruleAtIndex(shown, true)));
    };
    look();
    const auto change = [&](const char* name,
                            const std::function<void(rules::ChangeSet&, const rules::RuleRef&)>& describe) {
        rules::ChangeSet changes;
        describe(changes, store.ruleAtIndex(row, true));
        time(name, [&] {
            store.apply(changes);
            look();
        });
    };
    change("tag-one", [&](rules::ChangeSet& changes, const rules::RuleRef& rule) {
        rules::PolicyRuleFields fields = fieldsAt(store, row);
        fields.tag = "tagged";
        changes.changed.push_back({rule, {}, makeRuleValue(fields)});
    });
    change("edit-one", [&](rules::ChangeSet& changes, const rules::RuleRef& rule) {
        rules::PolicyRuleFields fields = fieldsAt(store, row);
        fields.path = "/Users/edited";
        changes.removed.push_back({rule});
        changes.added.push_back({rule, makeRuleValue(fields)});
    });
    change("delete-one",
        [](rules::ChangeSet& changes, const rules::RuleRef& rule) { changes.removed.push_back({rule}); });
    time("snapshot-first", [&] { store.userRulesSnapshot(); });
    time("snapshot-again", [&] { store.userRulesSnapshot(); });
    const auto search = [&](const char* name) {
        time(name, [&] {
            store.applyFilterWithString(text.substr(0, 1));
            store.totalRules(true);
        });
    };
    search("first-key-sorted");
    store.applyFilterWithString("");
    change("tag-again", [&](rules::ChangeSet& changes, const rules::RuleRef& rule) {
        rules::PolicyRuleFields fields = fieldsAt(store, row);
        fields.tag = "tagged again";
        changes.changed.push_back({rule, {}, makeRuleValue(fields)});
    });
    search("first-key-after-edit");
    store.applyFilterWithString("");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::fputs("usage: store_times FILE TEXT\n", stderr);
        return 2;
    }
    platform::Log log({});
    const platform::Locations nowhere("/nonexistent", "bench");
    std::unique_ptr<rules::RuleManager> store;
    time("load", [&] {
        store = rules::RuleManager::initWithContentsOfFile(arguments[1], false, nowhere, log);
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
    const auto sort = [&](const std::vector<rules::SortDescriptor>& descriptors) {
        store->sortIndexUsingDescriptors(descriptors);
        store->totalRules(true);
    };
    time("sort-path", [&] { sort({{rules::SortKey::path, true}}); });
    time("sort-class-path", [&] {
        sort({{rules::SortKey::policyClass, true}, {rules::SortKey::path, false}});
    });
    sort({});
    store->rebuildRulesCache(); // ties are in stored order again, or the first change would sort all rules
    std::size_t redundant = 0;
    time("redundancy", [&] {
        for (const rules::PolicyRulePtr& rule : store->policyRules())
            redundant += store->isRedundant(*rule) ? 1U : 0U;
    });
    std::printf("rules %zu %zu\n", store->storedRules(), redundant);
    editOne(*store, text);
    time("add-100000", [&] { addOneByOne(*store); });
    std::fflush(stdout);
    _exit(0); // skips freeing a million records
}
