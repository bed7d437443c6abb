#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <grp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane::test {

// The result of `work` in a child process, whose user, limits and descriptors it may change.
inline std::string answerOfChild(const std::function<std::string()>& work)
{
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0)
        return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        const std::string answer = work();
        const bool whole
            = ::write(ends[1], answer.data(), answer.size()) == static_cast<ssize_t>(answer.size());
        _exit(whole ? 0 : 1);
    }
    close(ends[1]);
    std::string answer;
    char buffer[4096];
    for (ssize_t got = 0; (got = read(ends[0], buffer, sizeof buffer)) > 0;)
        answer.append(buffer, static_cast<std::size_t>(got));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << "the child process failed";
    return answer;
}

// Drops the privileges of root, which permission bits do not restrict. False when that failed.
inline bool becomeOrdinaryUser()
{
    constexpr uid_t nobody = 65534;
    if (geteuid() != 0)
        return true;
    return setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0;
}

// Prevents the process from starting threads and processes, which only works for an ordinary user. False when
// that failed.
inline bool forbidThreads()
{
    const rlimit none{0, 0};
    return becomeOrdinaryUser() && setrlimit(RLIMIT_NPROC, &none) == 0;
}

} // namespace quorvane::test
