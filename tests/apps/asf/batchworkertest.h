#ifndef TESTS_APPS_ASF_BATCHWORKERTEST_H
#define TESTS_APPS_ASF_BATCHWORKERTEST_H

#include <apps/asf/batch/batchrun.h>
#include <kbaselib/kbase/kprocess.h>
#include <kbaselib/kbase/ksystem.h>
#include <tests/apps/asf/batchtest.h>

#include <filesystem>
#include <map>
#include <string>

namespace qextest
{

/// Runs in this process, with workers that end in ways of the test.
class KBatchWorkerTest : public KBatchTest
{
protected:
    using KRun = qexsdk::KProcessResult (*)(const qexsdk::KProcessOptions& pOptions);

    ~KBatchWorkerTest() override { qexsdk::KSystemReset(); }

    /// Runs over "in" to "out" with \p pWorker. \return the report
    std::map<std::string, nlohmann::json> RunWith(KRun pWorker, int pExit)
    {
        asfapp::KConsole      lConsole;
        asfapp::KBatchOptions lOptions;
        lOptions.mInputs = {mFolder / "in"};
        lOptions.mOutput = mFolder / "out";
        lOptions.mTo = {"bvh"};
        lOptions.mReport = mFolder / "r.jsonl";
        lOptions.mQuiet = true;
        lOptions.mJobs = 2;
        EXPECT_TRUE(asfapp::ParseBatchOptions(lOptions, lConsole));
        qexsdk::KSystemInUse().mProgramPath = []
        {
            return std::string(QEX_ASF_PROGRAM);
        };
        smRun = smRun == nullptr ? qexsdk::KSystemInUse().mRun : smRun;
        qexsdk::KSystemInUse().mRun = pWorker;
        smFolder = mFolder.Path();
        testing::internal::CaptureStderr();
        asfapp::KBatchRun(lOptions, lConsole).Run();
        mErrors = testing::internal::GetCapturedStderr();
        qexsdk::KSystemReset();
        EXPECT_EQ(lConsole.GetExit(), pExit) << mErrors;
        return Report("r.jsonl");
    }

    static bool IsAbout(const qexsdk::KProcessOptions& pOptions, const char* pName)
    {
        return std::filesystem::path(pOptions.mArguments.back()).filename() == pName;
    }

    static inline KRun                  smRun = nullptr; ///< The system's own.
    static inline std::filesystem::path smFolder;
    std::string                         mErrors;
};

} // namespace qextest

#endif
