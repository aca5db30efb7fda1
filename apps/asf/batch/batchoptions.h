#ifndef APPS_ASF_BATCH_BATCHOPTIONS_H
#define APPS_ASF_BATCH_BATCHOPTIONS_H

#include <apps/asf/batch/manifest.h>
#include <apps/asf/batch/rates.h>
#include <apps/asf/console.h>
#include <apps/asf/figure/convertoptions.h>

#include <string>
#include <vector>

namespace asfapp
{

/// Options of `asf batch`: the arguments, and the values that ParseBatchOptions() makes of them.
struct KBatchOptions
{
    std::vector<std::string> mInputs;
    std::string              mList;
    bool                     mIsNull = false;
    std::string              mOutput;
    std::vector<std::string> mTo; ///< Extensions to write; empty after parsing for "none".
    std::string              mRates;
    int                      mJobs = 0; ///< At least 1 after parsing.
    bool                     mVerify = false;
    bool                     mForce = false;
    double                   mTimeout = 0; ///< Seconds; 0: none.
    std::string              mCollision = "fail";
    std::string              mReport;
    bool                     mIsDry = false;
    std::string              mShardText;
    bool                     mGather = false;
    bool                     mQuiet = false;

    KConvertOptions          mConvert;          ///< Checked by the parser; the workers get mConvertArguments.
    std::vector<std::string> mConvertArguments; ///< In the order of the options' definition, so the same for the same options.

    KShard     mShard;
    KRateTable mRateTable;
    bool       mOnlyChecks = false; ///< --to none.
};

/// Checks the arguments. False after an error.
bool ParseBatchOptions(KBatchOptions& pOptions, KConsole& pConsole);

} // namespace asfapp

#endif
