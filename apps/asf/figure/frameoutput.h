#ifndef APPS_ASF_FIGURE_FRAMEOUTPUT_H
#define APPS_ASF_FIGURE_FRAMEOUTPUT_H

#include <apps/asf/console.h>
#include <apps/asf/figure/convertoptions.h>
#include <kbaselib/kbase/koutputfile.h>
#include <qexfigure/kqexfigure.h>
#include <qexscene/kqexframesink.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// \file
/// The output files of `asf convert` that take the frames of a shared evaluation.

namespace asfapp
{

/// A take and the frames of it to write.
struct KSampledTake
{
    const qexsdk::KQexFigureTake* mTake = nullptr; ///< Null: only the rest pose.
    std::string                   mName;           ///< As used in file names; several takes may have one.
    qexsdk::KQexSamplingRequest   mRequest;
    qexsdk::KQexSampling          mSampling;

    /// Layer of the take; null for the rest pose.
    const qexsdk::KQexAnimLayer* GetLayer() const { return mTake != nullptr ? qexsdk::KQexLayerOf(mTake->mStack) : nullptr; }
};

/// What all outputs of a run share.
struct KFrameOutputs
{
    const KConvertOptions& mOptions;
    qexsdk::KQexFigure&    mFigure;
    KConsole&              mConsole;

    std::vector<std::unique_ptr<qexsdk::KOutputFile>> mFiles; ///< Complete, not yet committed.
};

/// One file, or a file with its buffer. Every method is false after an error, which it has reported; nothing may follow then.
class KFrameOutput
{
public:
    /// For the takes \p pTakes, which are not empty.
    KFrameOutput(KFrameOutputs& pOutputs, std::string pPath, std::vector<const KSampledTake*> pTakes)
        : mOutputs(pOutputs), mPath(std::move(pPath)), mTakes(std::move(pTakes))
    {
    }

    virtual ~KFrameOutput() = default;

    /// The takes that it has, in order.
    const std::vector<const KSampledTake*>& GetTakes() const { return mTakes; }

    /// Begins its next take, \p pTake. \p pSink takes the frames; it stays null if the file has none.
    virtual bool BeginTake(const KSampledTake& pTake, qexsdk::KQexFrameSink*& pSink) = 0;

    /// Ends that take. \p pResult is that of evaluating its frames, also if it had no sink. If that is not eDONE, false, with an error if
    /// this output is the one that failed.
    virtual bool EndTake(qexsdk::KQexRunResult pResult) = 0;

    /// Completes the file after its last take and adds it to the files to commit.
    virtual bool End() = 0;

protected:
    KFrameOutputs&                         mOutputs;
    const std::string                      mPath;
    const std::vector<const KSampledTake*> mTakes;
};

/// What an Acclaim output writes.
struct KAcclaimTarget
{
    std::vector<std::string>     mMotions;            ///< Motion file of each take; empty: the skeleton alone.
    qexsdk::KQexAsfScene*        mSkeleton = nullptr; ///< Not null: a motion for this skeleton, which must outlive the output.
    qexsdk::KQexAmcSkeletonNotes mSkeletonNotes;      ///< Its notes.
};

/// An ASF file \p pPath with a motion for each take, or, for an existing skeleton, the motion \p pPath of one take. The takes' evaluation
/// has the figure's top node as root.
std::unique_ptr<KFrameOutput> MakeAcclaimOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                                const std::vector<const KSampledTake*>& pTakes, const KAcclaimTarget& pTarget);

/// A BVH file of one take.
std::unique_ptr<KFrameOutput> MakeBvhOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                            const std::vector<const KSampledTake*>& pTakes);

/// A GLB or glTF file. Its first take is an error in a build without glTF.
std::unique_ptr<KFrameOutput> MakeGltfOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                             const std::vector<const KSampledTake*>& pTakes);

/// A CSV file with the positions of one take.
std::unique_ptr<KFrameOutput> MakeTableOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                              const std::vector<const KSampledTake*>& pTakes);

/// An NPZ file of one take.
std::unique_ptr<KFrameOutput> MakeArrayOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                              const std::vector<const KSampledTake*>& pTakes);

} // namespace asfapp

#endif
