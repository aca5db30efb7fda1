#include <qexfigure/kqexfigure.h>

#ifdef QEX_WITH_GLTF
#include <qexioplugins/gltf/kqexfilegltf.h>
#endif

#include <string>
#include <utility>

/// \file
/// Loading figures from glTF; a build without it reports that.

namespace qexsdk
{

#ifdef QEX_WITH_GLTF

namespace
{

bool ReadGltf(const KQexFigureFile& pFile, KQexFileGltf& pReader, KQexScene* pScene, const KQexGltfReadOptions& pOptions,
              KQexGltfReadResult& pResult)
{
    return pFile.IsInMemory() ? pReader.ReadBuffer(pFile.GetBytes().data(), pFile.GetBytes().size(), pScene, pOptions, pResult)
                              : pReader.Read(pFile.GetPath(), pScene, pOptions, pResult);
}

KQexFigureTake MakeTake(const KQexGltfTake& pRead)
{
    const KQexSampling& lSampling = pRead.mFileSampling;
    KQexFigureTake      lTake;
    lTake.mName = pRead.mStack->GetName();
    lTake.mGivenName = pRead.mName;
    lTake.mStack = pRead.mStack;
    lTake.mIsSingle = lSampling.mCount == 1;
    lTake.mFrames = lSampling.mCount;
    lTake.mStart = lSampling.mStart;
    lTake.mEnd = lSampling.GetTime(lSampling.mCount - 1);
    lTake.mStep = lSampling.mStep;
    lTake.mRate = lSampling.mStep.Get() > 0 ? 1.0 / lSampling.mStep.GetSeconds() : 0.0;
    lTake.mOrigin = lSampling.mStart;
    return lTake;
}

} // namespace

bool KQexFigure::LoadGltf(const KQexFigureFile& pFile, const KQexFigureOptions& pOptions, KQexFigureReport& pReport)
{
    KQexFileGltf        lReader;
    KQexGltfReadOptions lOptions;
    KQexGltfReadResult  lResult;
    lOptions.mFramesPerSecond = pOptions.mSampleRate;
    lOptions.mBytesPath = pFile.IsInMemory() && pFile.GetPath().find('/') != std::string::npos ? pFile.GetPath() : "";
    lOptions.mProgress = pOptions.mProgress;
    const bool lOk = ReadGltf(pFile, lReader, mScene, lOptions, lResult);
    for (const KQexTextMessage& lMessage : lReader.GetMessages())
    {
        pReport.Add(pFile.GetDisplayPath(), lMessage);
    }
    if (lResult.mCancelled)
    {
        pReport.SetCancelled();
    }
    else if (!lOk)
    {
        pReport.Raise(eFIGURE_INPUT);
    }
    if (!lOk)
    {
        return false;
    }
    mRoots = lResult.mRoots;
    for (const KQexGltfTake& lRead : lResult.mTakes)
    {
        mTakes.push_back(MakeTake(lRead));
    }
    mDofs = std::move(lResult.mBoneDofs);
    mHasDofs = !mDofs.empty();
    return true;
}

#else

bool KQexFigure::LoadGltf(const KQexFigureFile& pFile, const KQexFigureOptions&, KQexFigureReport& pReport)
{
    return pReport.Fail(eFIGURE_USAGE, pFile.GetDisplayPath(), "is glTF, but this program was built without it");
}

#endif

} // namespace qexsdk
