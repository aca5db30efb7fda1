#ifndef TESTS_APPS_ASF_CONVERTTEST_H
#define TESTS_APPS_ASF_CONVERTTEST_H

#include <tests/apps/asf/runasf.h>

#include <filesystem>
#include <sstream>

namespace qextest
{

/// Three frames of the small skeleton.
inline std::string ThreeFrames()
{
    return ":FULLY-SPECIFIED\n:DEGREES\n1\nroot 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n2\nroot 0 0 1 0 0 0\nthigh -10 0 0\nshin 20\n"
           "3\nroot 0 0 2 0 5 0\nthigh -20 0 0\nshin 40\n";
}

/// The first line of \p pText that contains \p pPart; "" when none does.
inline std::string LineWith(const std::string& pText, const std::string& pPart)
{
    std::istringstream lLines(pText);
    for (std::string lLine; std::getline(lLines, lLine);)
    {
        if (lLine.find(pPart) != std::string::npos)
        {
            return lLine;
        }
    }
    return "";
}

/// A folder with a small skeleton and its motion, and the samples.
class KConvertTest : public testing::Test
{
protected:
    void SetUp() override
    {
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        WriteFile(mFolder / "small_01.amc", ThreeFrames());
        std::filesystem::copy_file(Sample("walker.asf"), mFolder / "walker.asf");
        std::filesystem::copy_file(Sample("walk.amc"), mFolder / "walk.amc");
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(const std::vector<std::string>& pArguments) { return RunAsf(pArguments, mOptions); }

    /// Runs `asf convert` with the arguments in \p pCall.
    KRunResult Convert(const std::string& pCall) { return Run(WordsOf("convert -q " + pCall)); }

    void ExpectConverts(const std::string& pCall)
    {
        const KRunResult lResult = Convert(pCall);
        EXPECT_EQ(lResult.mExit, 0) << pCall << "\n" << lResult.mErr;
        EXPECT_EQ(lResult.mErr, "") << pCall;
    }

    std::string Text(const std::string& pName) { return ReadFile(mFolder / pName); }

    void ExpectSame(const std::vector<std::string>& pFiles, const std::string& pIgnored)
    {
        std::vector<std::string> lArguments{"diff", "-q", "--tolerance", "1e-4", "--ignore", pIgnored};
        lArguments.insert(lArguments.end(), pFiles.begin(), pFiles.end());
        const KRunResult lResult = Run(lArguments);
        EXPECT_EQ(lResult.mExit, 0) << lResult.mOut << lResult.mErr;
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

} // namespace qextest

#endif
