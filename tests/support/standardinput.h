#ifndef TESTS_SUPPORT_STANDARDINPUT_H
#define TESTS_SUPPORT_STANDARDINPUT_H

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace qextest
{

/// Redirects standard input to a pipe that delivers \p pText, during its lifetime.
class KStandardInput
{
public:
    /// \param pLate the pipe is non-blocking and delivers its text late, in two parts.
    explicit KStandardInput(const std::string& pText, bool pLate = false) : mKept(::dup(STDIN_FILENO))
    {
        int lEnds[2];
        EXPECT_EQ(::pipe(lEnds), 0);
        EXPECT_EQ(::fcntl(lEnds[0], F_SETFL, pLate ? O_NONBLOCK : 0), 0);
        ::dup2(lEnds[0], STDIN_FILENO);
        ::close(lEnds[0]);
        mWriter = std::thread(
            [pText, pLate, lFile = lEnds[1]]
            {
                for (size_t i = 0; i < pText.size();)
                {
                    if (pLate)
                    {
                        std::this_thread::sleep_for(std::chrono::milliseconds(20));
                    }
                    const size_t  lPart = pLate && i == 0 ? pText.size() / 2 : pText.size() - i;
                    const ssize_t lSize = ::write(lFile, pText.data() + i, lPart);
                    if (lSize <= 0)
                    {
                        break;
                    }
                    i += static_cast<size_t>(lSize);
                }
                ::close(lFile);
            });
    }
    ~KStandardInput()
    {
        mWriter.join();
        ::dup2(mKept, STDIN_FILENO);
        ::close(mKept);
    }

private:
    int         mKept;
    std::thread mWriter;
};

} // namespace qextest

#endif
