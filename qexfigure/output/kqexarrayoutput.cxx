#include <qexfigure/kqexmotionarrays.h>
#include <qexfigure/output/kqexframeoutput.h>

#include <new>

namespace qexsdk
{

namespace
{

constexpr double kMetre = 100; ///< In centimetres.

class KArrayOutput : public KQexFileOutput
{
public:
    using KQexFileOutput::KQexFileOutput;

    bool BeginTake(const KQexSampledTake& pTake, KQexFrameSink*& pSink) override
    {
        const size_t lRoots = mOutputs.mFigure.GetRoots().size();
        if (IsImitation() && lRoots != 1)
        {
            return Refuse("is for a figure with one root, but there are " + std::to_string(lRoots), eFIGURE_INPUT);
        }
        if (!Open(*mOut) || !KQexCheckArchive(*mOut, mPath, mOutputs.mOptions.mOutputOption, mOutputs.mReport))
        {
            return false;
        }
        mSink = KQexMakeMotionArrays(mOutputs.mFigure, GetOptions(pTake), mFile);
        if (mSink == nullptr)
        {
            throw std::bad_alloc();
        }
        pSink = mSink.get();
        return true;
    }

    bool EndTake(KQexRunResult pResult) override
    {
        if (pResult != KQexRunResult::eDONE)
        {
            return mOut->HasFailed() && ReportFailure(*mOut);
        }
        return (mFile.Finish() && mOut->Prepare()) || ReportFailure(*mOut);
    }

private:
    bool IsImitation() const { return mOutputs.mOptions.mArrays == KQexArraySet::eIMITATION; }

    KQexMotionArrayOptions GetOptions(const KQexSampledTake& pTake) const
    {
        KQexMotionArrayOptions lOptions;
        lOptions.mSet = mOutputs.mOptions.mArrays;
        lOptions.mTake = pTake.mTake;
        lOptions.mSampling = pTake.mSampling;
        lOptions.mSpace = GetSpace();
        if (IsImitation())
        {
            lOptions.mSpace.mPerCentimetre = mOutputs.mOptions.mScale / kMetre;
            lOptions.mSpace.mZUp = true;
        }
        return lOptions;
    }

    KQexNpzFile                    mFile{*mOut};
    std::unique_ptr<KQexFrameSink> mSink;
};

} // namespace

std::unique_ptr<KQexFrameOutput> KMakeArrayOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                  const std::vector<const KQexSampledTake*>& pTakes)
{
    return std::make_unique<KArrayOutput>(pOutputs, pPath, pTakes);
}

} // namespace qexsdk
