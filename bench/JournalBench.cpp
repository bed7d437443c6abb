#include "history/Journal.h"
#include "platform/Log.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include <unistd.h>

// journal_bench FILE: the cost of a version of FILE with one changed line in a journal, one figure per line:
// name and value. The reference is a copy of FILE and its sync to disk; for both the best of several runs
// counts.

namespace {

using namespace quorvane;
namespace fs = std::filesystem;

constexpr int runs = 5;

double secondsOf(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double bestOf(const std::function<double(int run)>& measure)
{
    double best = measure(0);
    for (int run = 1; run < runs; ++run)
        best = std::min(best, measure(run));
    return best;
}

double copyAndSync(const std::string& file, const std::string& copy)
{
    return bestOf([&](int) {
        fs::remove(copy);
        return secondsOf([&] {
            if (std::system(("cp '" + file + "' '" + copy + "' && sync '" + copy + "'").c_str()) != 0)
                std::fputs("cp failed\n", stderr);
        });
    });
}

void measure(const std::string& file, const std::string& folder)
{
    std::ifstream in(file, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(in), {});
    platform::Log log({});
    const auto journal = history::Journal::open(folder + "/state", file, {}, log);
    history::NewVersion next;
    next.bytes = text;
    const auto record = [&] {
        const auto number = journal->begin(next);
        if (!number || !journal->finish(*number, history::VersionState::done))
            std::fprintf(stderr, "%s\n", journal->problem().value_or("not kept").c_str());
    };
    std::printf("first-version %.3f s\n", secondsOf(record));
    std::uint64_t size = journal->sizeOnDisk();
    std::printf(
        "first-version-size %.3f %%\n", 100.0 * static_cast<double>(size) / static_cast<double>(text.size()));
    std::uint64_t largest = 0;
    const double version = bestOf([&](int run) {
        const std::string previous = text;
        text.insert(text.find('\n', text.size() / runs * static_cast<std::size_t>(run)), " ; changed");
        next.bytes = text;
        next.previousBytes = previous;
        const double seconds = secondsOf(record);
        largest = std::max(largest, journal->sizeOnDisk() - size);
        size = journal->sizeOnDisk();
        return seconds;
    });
    std::printf("version %.3f s\n", version);
    std::printf(
        "version-size %.4f %%\n", 100.0 * static_cast<double>(largest) / static_cast<double>(text.size()));
    std::printf("read-version %.3f s\n", secondsOf([&] { journal->bytesOf(runs + 1); }));
    const double copy = copyAndSync(file, folder + "/copy");
    std::printf("copy-and-sync %.3f s\n", copy);
    std::printf("version-times-copy %.2f\n", version / copy);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2) {
        std::fputs("usage: journal_bench FILE\n", stderr);
        return 2;
    }
    const std::string folder = arguments[1] + std::string(".bench-") + std::to_string(getpid());
    fs::create_directory(folder);
    measure(arguments[1], folder);
    fs::remove_all(folder);
}
