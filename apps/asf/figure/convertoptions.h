#ifndef APPS_ASF_FIGURE_CONVERTOPTIONS_H
#define APPS_ASF_FIGURE_CONVERTOPTIONS_H

#include <apps/asf/figure/motionoptions.h>
#include <apps/asf/figure/worldoptions.h>
#include <kbaselib/kmath/keulertable.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/output/kqexfigurewrite.h>

#include <cstdint>
#include <string>
#include <vector>

namespace asfapp
{

/// A file to write.
struct KConvertOutput
{
    std::string              mPath; ///< May have words in braces, see FillName().
    qexsdk::KQexOutputFormat mFormat = qexsdk::eOUTPUT_BVH;
};

/// A time in a take: seconds from the first frame in the file, or a frame's number.
struct KTakeTime
{
    bool   mIsSet = false;
    bool   mIsFrame = false;
    double mValue = 0;
};

/// Options of `asf convert`: the arguments, and the values that ParseConvertOptions() makes of them.
struct KConvertOptions
{
    std::vector<std::string> mFiles;
    std::vector<std::string> mOutputs;
    std::string              mTo;
    std::string              mSkeleton;
    KMotionOptions           mMotion; ///< --asf, --from, --fps, --source-fps, --allow-unmatched and --quiet.
    std::string              mStart;
    std::string              mEnd;
    int                      mEvery = 1;
    KWorldOptions            mWorld;
    std::string              mTake;
    bool                     mRemoveDummies = false;
    bool                     mLimits = true;
    std::string              mFilter = "unroll";
    bool                     mReduce = false;
    std::string              mMesh;
    std::string              mChannels;
    std::string              mPreset;         ///< "motion-imitation", or empty.
    double                   mLengthUnit = 0; ///< 0: that of the skeleton read, else 1.
    std::string              mTranslations = "moving";
    std::string              mBasePose = "rest";
    bool                     mRaw = false;
    bool                     mWriteRate = false;
    bool                     mKeepGoodFrames = false;
    int                      mThreads = 0;
    bool                     mJson = false;     ///< --json: a report on standard output instead of messages.
    bool                     mOnlyRead = false; ///< Write nothing.
    std::string              mMemory;           ///< --memory as given.
    uint64_t                 mMaxMemory = 0;    ///< --memory in bytes; 0: no limit.

    std::vector<KConvertOutput> mTargets;
    KTakeTime                   mStartTime;
    KTakeTime                   mEndTime;
    qexsdk::ERotationOrder      mOrder = qexsdk::eEULER_XYZ;

    bool Writes(qexsdk::KQexOutputFormat pFormat) const;
};

/// Parses and checks the arguments. False after an error.
bool ParseConvertOptions(KConvertOptions& pOptions, KConsole& pConsole);

/// The options for reading.
qexsdk::KQexFigureOptions FigureOptions(const KConvertOptions& pOptions);

} // namespace asfapp

#endif
