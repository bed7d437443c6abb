#include "codesign/Codesign.h"
#include "codesign/Digests.h"
#include "tests/support/Answers.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace quorvane::codesign {

TEST(Codesign, AnswersManyThreadsAtOnceAsItAnswersOne)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", test::signedProgram());
    const std::string alone = sha256OfFile(path).value();
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 25; ++round) {
                const bool same = getStaticStrictCodeSignState(path) == 2
                    && getStaticCodeSignTeamIdentifier(path) == "TEAM123456"
                    && getStaticCodeSignCertInfo(path) == "Self-Signed Certificate"
                    && sha256OfFile(path) == alone;
                right += same ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, 100);
}

} // namespace quorvane::codesign
