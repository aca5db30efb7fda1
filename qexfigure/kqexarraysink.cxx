#include <qexfigure/kqexarraysink.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

namespace qexsdk
{

KQexArraySink::KQexArraySink(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions, KQexNpzFile& pFile)
    : mFigure(pFigure), mOptions(pOptions), mFile(pFile)
{
}

size_t KQexArraySink::AddRows(const std::string& pName, const std::vector<uint64_t>& pShape)
{
    std::vector<uint64_t> lShape = {static_cast<uint64_t>(mOptions.mSampling.mCount)};
    lShape.insert(lShape.end(), pShape.begin(), pShape.end());
    KRows lRows;
    lRows.mArray = mFile.Add(pName, {KQexArrayType::eFLOAT32, std::move(lShape)});
    lRows.mStart = mValueCount;
    lRows.mCount = static_cast<size_t>(std::accumulate(pShape.begin(), pShape.end(), uint64_t(1), std::multiplies<>()));
    mRows.push_back(lRows);
    mValueCount += lRows.mCount;
    return lRows.mStart;
}

size_t KQexArraySink::AddRotations(const std::string& pName, size_t pJoints)
{
    const size_t lStart = AddRows(pName, {pJoints, 4});
    mRotations.push_back(KRotations{lStart, KQexRotationWriter(KQexRotationForm::eQUATERNION, 0, pJoints)});
    return lStart;
}

void KQexArraySink::AddRate()
{
    const double lStep = mOptions.mSampling.mStep.GetSeconds();
    mFile.AddNumbers("fps", {KQexArrayType::eFLOAT64, {}}, {lStep > 0.0 ? 1.0 / lStep : 0.0});
}

size_t KQexArraySink::AddDofs(const std::vector<KQexDofColumn>& pDofs, const std::string& pArray)
{
    std::vector<std::string> lNames;
    for (const KQexDofColumn& lDof : pDofs)
    {
        lNames.push_back(lDof.mName);
    }
    mFile.AddTexts("dof_names", lNames);
    return AddRows(pArray, {lNames.size()});
}

void KQexArraySink::Begin(const KQexFrameNodes& pNodes, int pThreads)
{
    mFrames.assign(static_cast<size_t>(pThreads), KQexFigurePose(mFigure.GetJoints(), pNodes, mOptions.mSpace, eFRAME_ALL));
}

const KQexFigurePose& KQexArraySink::JointsIn(int pThread, const KQexFrame& pFrame)
{
    KQexFigurePose& lJoints = mFrames[static_cast<size_t>(pThread)];
    lJoints.Set(pFrame);
    return lJoints;
}

void KQexArraySink::MakeContinuous(double* pValues)
{
    for (KRotations& lRotations : mRotations)
    {
        lRotations.mWriter.MakeContinuous(pValues + lRotations.mStart);
    }
}

bool KQexArraySink::Write(const KQexFrameBlock& pBlock)
{
    bool          lOk = true;
    const double* lValues = pBlock.mValues.data();
    for (long long i = pBlock.mFirst; i < pBlock.mEnd && lOk; ++i, lValues += mValueCount)
    {
        for (const KRows& lRows : mRows)
        {
            lOk = lOk && mFile.Append(lRows.mArray, lValues + lRows.mStart, lRows.mCount);
        }
    }
    return lOk;
}

} // namespace qexsdk
