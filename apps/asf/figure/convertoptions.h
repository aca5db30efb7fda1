#ifndef APPS_ASF_FIGURE_CONVERTOPTIONS_H
#define APPS_ASF_FIGURE_CONVERTOPTIONS_H

#include <apps/asf/figure/figurescene.h>
#include <apps/asf/figure/motioninput.h>
#include <kbaselib/kmath/keulertable.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace asfapp
{

/// What a file is written as.
enum EOutputKind
{
    eOUT_ASF,
    eOUT_AMC,
    eOUT_BVH,
    eOUT_GLB,
    eOUT_GLTF
};

/// A file to write.
struct KConvertOutput
{
    std::string mPath; ///< May hold {name}, for which the take's name is put.
    EOutputKind mKind = eOUT_BVH;
};

/// A moment in a take: seconds, or frames from its first one.
struct KMoment
{
    bool   mIsSet = false;
    bool   mIsFrame = false;
    double mValue = 0;
};

/// What `asf convert` was asked for: the words of the command line, and what they mean once TakeConvertOptions() took them.
struct KConvertOptions
{
    std::vector<std::string> mFiles;
    std::vector<std::string> mOutputs;
    std::string              mFrom;
    std::string              mTo;
    std::string              mSkeleton;
    KMotionOptions           mMotion; ///< --asf, --motion-fps and --quiet.
    std::string              mFps;
    std::string              mStart;
    std::string              mEnd;
    int                      mEvery = 1;
    double                   mScale = 1;
    std::string              mTake;
    bool                     mRemoveDummies = false;
    bool                     mLimits = true;
    std::string              mFilter = "unroll";
    bool                     mReduce = false;
    std::string              mUp;
    std::string              mMesh;
    std::string              mChannels;
    double                   mLengthUnit = 0; ///< 0: the skeleton's that was read, else 1.
    std::string              mTranslations = "moving";
    std::string              mBasePose = "rest";
    bool                     mRaw = false;
    bool                     mTellRate = false;
    bool                     mKeepGoodFrames = false;
    int                      mThreads = 0;

    std::vector<KConvertOutput> mTargets;
    double                      mRate = 0; ///< Of --fps; 0: the motion's own.
    KMoment                     mSince;    ///< --start
    KMoment                     mUntil;    ///< --end
    qexsdk::ERotationOrder      mOrder = qexsdk::eEULER_XYZ;

    bool Writes(EOutputKind pKind) const;
};

/// Adds the options to the command.
void AddConvertOptions(CLI::App& pCommand, KConvertOptions& pOptions);

/// Makes `-o A.asf B.amc` two options with a name each, so that no name of an input is taken for an output's.
std::vector<std::string> SplitOutputPairs(int pArgumentCount, char** pArguments);

/// Finds out what the words mean. False after an error.
bool TakeConvertOptions(KConvertOptions& pOptions, KConsole& pConsole);

/// The part of the options that is about reading.
KFigureOptions FigureOptions(const KConvertOptions& pOptions);

} // namespace asfapp

#endif
