#include "codesign/Digests.h"
#include "codesign/ProgramCode.h"
#include "codesign/SignatureQueries.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/SignatureBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <stdexcept>

#include <openssl/sha.h>

// Each benchmark alternates with the plain SHA-256 of the same bytes in memory and shows the ratio: 1 is as
// fast.

namespace {

using namespace quorvane;

constexpr std::size_t programSize = 64U << 20U;

// A program of 64 MiB, ad hoc signed by SHA-256 in pages of 2^pageSize bytes.
codesign::Bytes largeProgram(std::uint8_t pageSize)
{
    codesign::Bytes program(programSize);
    for (std::size_t i = 0; i < program.size(); ++i)
        program[i] = static_cast<std::uint8_t>(i * 2654435761U >> 13U);
    const auto put = [&program](std::size_t offset, std::uint64_t value) {
        test::putNumber(program, offset, value, 4, codesign::ByteOrder::little);
    };
    constexpr std::size_t room = 2U << 20U;
    std::fill_n(program.begin(), 4096, std::uint8_t{0});
    put(0, 0xfeedfacf);
    put(4, 0x0100000c);
    put(12, 2);
    put(16, 2);
    put(20, 24 + 16);
    put(32, 0x2); // the symbol table, which reaches to the end
    put(36, 24);
    put(48, 4096);
    put(52, programSize + room - 4096);
    put(56, 0x1d); // the offset of the signature
    put(60, 16);
    put(64, programSize);
    put(68, room);
    test::SignaturePlan plan;
    plan.directories.front().pageSize = pageSize;
    test::append(program, makeSignature(plan, program));
    program.resize(programSize + room);
    return program;
}

double secondsOf(const std::function<void()>& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// Alternates `work` over `size` bytes and the reference over the same bytes.
void compare(benchmark::State& state, const codesign::Bytes& bytes, std::size_t size,
    const std::function<void()>& work)
{
    double ours = 0;
    double yardstick = 0;
    while (state.KeepRunning()) {
        const double seconds = secondsOf(work);
        state.SetIterationTime(seconds);
        ours += seconds;
        yardstick += secondsOf([&] {
            unsigned char digest[SHA256_DIGEST_LENGTH];
            benchmark::DoNotOptimize(SHA256(bytes.data(), size, digest));
        });
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
    state.counters["ratio_to_openssl"] = yardstick / ours;
}

void verifyPages(benchmark::State& state)
{
    const auto pageSize = static_cast<std::uint8_t>(state.range(0));
    const codesign::Bytes program = largeProgram(pageSize);
    const test::TemporaryFolder folder;
    const auto code = codesign::ProgramCode::atPath(folder.write("program", program));
    if (codeSignState(code.get(), codesign::strictFlags) != codesign::signatureState::valid)
        throw std::runtime_error("the program of the bench is not valid");
    compare(state, program, programSize,
        [&] { benchmark::DoNotOptimize(codeSignState(code.get(), codesign::strictFlags)); });
    state.counters["pages_per_second"] = benchmark::Counter(
        static_cast<double>(programSize >> pageSize), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(verifyPages)->Arg(12)->Arg(14)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);

void digestFile(benchmark::State& state)
{
    const codesign::Bytes contents = largeProgram(12);
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", contents);
    compare(
        state, contents, contents.size(), [&] { benchmark::DoNotOptimize(codesign::sha256OfFile(path)); });
}
BENCHMARK(digestFile)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);

// The queries of the table about a program: no pages are read.
void teamOfProgram(benchmark::State& state)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", largeProgram(12));
    while (state.KeepRunning())
        benchmark::DoNotOptimize(
            codeSignText(codesign::ProgramCode::atPath(path).get(), codesign::kSecCodeInfoTeamIdentifier));
}
BENCHMARK(teamOfProgram)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
