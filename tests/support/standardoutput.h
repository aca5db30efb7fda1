#ifndef TESTS_SUPPORT_STANDARDOUTPUT_H
#define TESTS_SUPPORT_STANDARDOUTPUT_H

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace qextest
{

/// Redirects standard output during its lifetime.
class KStandardOutput
{
public:
    /// To a pipe whose reader has closed it.
    KStandardOutput() : KStandardOutput(OpenClosedPipe()) {}

    /// To the file \p pPath, which is created or replaced.
    explicit KStandardOutput(const std::filesystem::path& pPath)
        : KStandardOutput(::open(pPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600))
    {
    }

    ~KStandardOutput()
    {
        ::dup2(mKept, STDOUT_FILENO);
        ::close(mKept);
        ::signal(SIGPIPE, mHandler);
    }
    KStandardOutput(const KStandardOutput&) = delete;
    KStandardOutput& operator=(const KStandardOutput&) = delete;

private:
    explicit KStandardOutput(int pFile) : mHandler(::signal(SIGPIPE, SIG_IGN))
    {
        std::fflush(stdout);
        mKept = ::dup(STDOUT_FILENO);
        EXPECT_GE(::dup2(pFile, STDOUT_FILENO), 0);
        ::close(pFile);
    }

    static int OpenClosedPipe()
    {
        int lEnds[2];
        EXPECT_EQ(::pipe(lEnds), 0);
        ::close(lEnds[0]);
        return lEnds[1];
    }

    void (*mHandler)(int);
    int mKept = -1;
};

} // namespace qextest

#endif
