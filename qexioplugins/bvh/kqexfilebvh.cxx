#include <qexioplugins/bvh/kqexfilebvh.h>

#include <qexioplugins/bvh/kqexbvhbuilder.h>
#include <qexioplugins/bvh/kqexbvhwriter.h>
#include <qexscene/kqexsceneundo.h>

#include <new>
#include <utility>

namespace qexsdk
{

KQexFileBvh::KQexFileBvh(bool pVerb) : KQexTextFile("BVH", " \t:", "", true, pVerb) {}

KQexFileBvh::~KQexFileBvh()
{
    Close();
}

bool KQexFileBvh::Read(KQexScene* pScene, const KQexBvhReadOptions& pOptions, KQexBvhReadResult& pResult)
{
    pResult = KQexBvhReadResult();
    KQexSceneUndo  lUndo(pScene);
    KQexBvhBuilder lBuilder(*this, pScene, pOptions);
    try
    {
        if (lBuilder.ReadHierarchy() && lBuilder.ReadMotion(pResult))
        {
            lBuilder.Finish(pResult);
            lUndo.Keep();
            return true;
        }
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
    }
    return false;
}

bool KQexFileBvh::Write(const std::vector<KQexNode*>& pRoots, const KQexBvhWriteOptions& pOptions)
{
    KQexFrameSink* const       lWriter = BeginWrite(pRoots, pOptions);
    const KQexAnimLayer* const lLayer = KQexLayerOf(pOptions.mStack);
    return lWriter != nullptr &&
           EndWrite(KQexRunFrames(pRoots, lLayer, pOptions.mSampling, &lWriter, 1, pOptions.mThreads, pOptions.mProgress));
}

KQexFrameSink* KQexFileBvh::BeginWrite(const std::vector<KQexNode*>& pRoots, const KQexBvhWriteOptions& pOptions)
{
    if (pRoots.empty() || pOptions.mSampling.mCount < 1)
    {
        Error("Nothing to write\n");
        return nullptr;
    }
    try
    {
        auto lWriter = std::make_unique<KQexBvhWriter>(*this, pOptions);
        lWriter->Prepare(pRoots);
        lWriter->WriteHierarchy();
        lWriter->WriteMotionStart();
        mWriter = std::move(lWriter);
        return mWriter.get();
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
        return nullptr;
    }
}

bool KQexFileBvh::EndWrite(KQexRunResult pResult)
{
    mWriter.reset();
    if (GetOutput().HasFailed())
    {
        Error("Can't write %s (%s)\n", GetPath().c_str(), GetOutput().GetReason().c_str());
    }
    else if (pResult == KQexRunResult::eOUT_OF_MEMORY)
    {
        Error("Out of memory\n");
    }
    return pResult == KQexRunResult::eDONE;
}

} // namespace qexsdk
