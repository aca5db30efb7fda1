#ifndef QEXFIGURE_OUTPUT_KQEXFRAMEOUTPUT_H
#define QEXFIGURE_OUTPUT_KQEXFRAMEOUTPUT_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexfigure/output/kqexfigurewrite.h>
#include <qexfigure/output/kqexoutputerror.h>
#include <qexscene/kqexframesink.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// \file
/// The output files of a figure that take the frames of a shared evaluation.

namespace qexsdk
{

/// A take and its frames to write.
struct KQexSampledTake
{
    const KQexFigureTake* mTake = nullptr; ///< Null: only the rest pose.
    KQexSamplingRequest   mRequest;        ///< As it was asked for.
    KQexSampling          mSampling;       ///< What mRequest gives.

    /// Null for the rest pose.
    KQexAnimStack* GetStack() const { return mTake != nullptr ? mTake->mStack : nullptr; }

    /// The same.
    const KQexAnimLayer* GetLayer() const { return KQexLayerOf(GetStack()); }
};

/// What all outputs of a run share.
struct KQexFrameOutputs
{
    const KQexFigureWriteOptions& mOptions; ///< Those of the call.
    KQexFigure&                   mFigure;  ///< What is written.
    KQexFigureReport&             mReport;  ///< Of all outputs.

    std::vector<std::unique_ptr<KOutputFile>> mFiles; ///< Complete, not yet committed.
};

/// One file, or a file with its buffer. Every method is false after a failure, which it has reported; nothing may follow then. May throw
/// std::bad_alloc.
class KQexFrameOutput
{
public:
    /// For the takes \p pTakes, which are not empty.
    KQexFrameOutput(KQexFrameOutputs& pOutputs, std::string pPath, std::vector<const KQexSampledTake*> pTakes)
        : mOutputs(pOutputs), mPath(std::move(pPath)), mTakes(std::move(pTakes))
    {
    }

    virtual ~KQexFrameOutput() = default;

    /// The takes that it has, in order, which is also that of their addresses.
    const std::vector<const KQexSampledTake*>& GetTakes() const { return mTakes; }

    /// Begins its next take, \p pTake. \p pSink takes the frames; it stays null if the file has none.
    virtual bool BeginTake(const KQexSampledTake& pTake, KQexFrameSink*& pSink) = 0;

    /// Ends that take. \p pResult is that of evaluating its frames, also if it had no sink. If that is not eDONE, false, with an error if
    /// this output is the one that failed.
    virtual bool EndTake(KQexRunResult pResult) = 0;

    /// Completes the file after its last take and adds it to the files to commit.
    virtual bool End() = 0;

protected:
    /// Opens \p pOut for its path.
    bool Open(KOutputFile& pOut) { return pOut.Open(mPath.c_str()) || ReportFailure(pOut); }

    /// Reports why \p pOut failed. \return false
    bool ReportFailure(const KOutputFile& pOut) const { return KQexReportOutputError(pOut, mPath, mOutputs.mReport); }

    /// Reports an error, by default the caller's. \return false
    bool Refuse(const std::string& pText, KQexFigureStatus pStatus = eFIGURE_USAGE) const
    {
        return mOutputs.mReport.Fail(pStatus, KQexDisplayOutput(mPath), pText);
    }

    /// Reports the messages of what writes the file.
    void AddMessages(const std::vector<KQexTextMessage>& pMessages) const
    {
        for (const KQexTextMessage& lMessage : pMessages)
        {
            mOutputs.mReport.Add(KQexDisplayOutput(mPath), lMessage);
        }
    }

    /// Reports the messages of what failed to write the file; without an error among them, there was no memory for one. \return false
    bool ReportFailure(const std::vector<KQexTextMessage>& pMessages) const
    {
        AddMessages(pMessages);
        const bool lHasError = std::any_of(pMessages.begin(), pMessages.end(),
                                           [](const KQexTextMessage& pMessage) { return pMessage.mSeverity == KQexTextMessage::eERROR; });
        lHasError ? mOutputs.mReport.Raise(eFIGURE_SYSTEM) : mOutputs.mReport.SetOutOfMemory();
        return false;
    }

    /// Unit and axes of BVH, CSV and arrays.
    KQexOutputSpace GetSpace() const
    {
        const KQexFigureWriteOptions& lOptions = mOutputs.mOptions;
        KQexOutputSpace               lSpace;
        lSpace.mPerCentimetre = lOptions.mScale / (lOptions.mUnit > 0 ? lOptions.mUnit : 1.0);
        lSpace.mZUp = lOptions.mZUp;
        return lSpace;
    }

    KQexFrameOutputs&                         mOutputs; ///< What all share.
    const std::string                         mPath;    ///< Of the file.
    const std::vector<const KQexSampledTake*> mTakes;   ///< In the order in which they are written.
};

/// An output that is one file, which it opens itself.
class KQexFileOutput : public KQexFrameOutput
{
public:
    using KQexFrameOutput::KQexFrameOutput;

    bool End() override
    {
        mOutputs.mFiles.push_back(std::move(mOut));
        return true;
    }

protected:
    std::unique_ptr<KOutputFile> mOut = std::make_unique<KOutputFile>(); ///< Null after End().
};

/// What an Acclaim output writes.
struct KQexAcclaimTarget
{
    std::vector<std::string> mMotions;            ///< ASF: motion file of each take; "": none.
    KQexAsfScene*            mSkeleton = nullptr; ///< Not null: a motion for this skeleton, which must outlive the output.
    KQexAmcSkeletonNotes     mSkeletonNotes;      ///< Its notes.
};

/// An ASF file \p pPath with motions of its takes, or, for an existing skeleton, the motion \p pPath of one take. The takes' evaluation
/// has the figure's top node as root.
std::unique_ptr<KQexFrameOutput> KMakeAcclaimOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                    const std::vector<const KQexSampledTake*>& pTakes, const KQexAcclaimTarget& pTarget);

/// A BVH file of one take.
std::unique_ptr<KQexFrameOutput> KMakeBvhOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                const std::vector<const KQexSampledTake*>& pTakes);

/// A GLB or glTF file. Its first take is an error in a build without glTF.
std::unique_ptr<KQexFrameOutput> KMakeGltfOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                 const std::vector<const KQexSampledTake*>& pTakes);

/// A CSV file with the positions of one take.
std::unique_ptr<KQexFrameOutput> KMakeTableOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                  const std::vector<const KQexSampledTake*>& pTakes);

/// An NPZ file of one take.
std::unique_ptr<KQexFrameOutput> KMakeArrayOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                  const std::vector<const KQexSampledTake*>& pTakes);

} // namespace qexsdk

#endif
