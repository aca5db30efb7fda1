#include <qexioplugins/bvh/kqexfilebvh.h>

#include <qexioplugins/bvh/kqexbvhbuilder.h>
#include <qexioplugins/bvh/kqexbvhwriter.h>
#include <qexscene/kqexsceneundo.h>

#include <new>

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
    if (pRoots.empty() || pOptions.mSampling.mCount < 1)
    {
        Error("Nothing to write\n");
        return false;
    }
    KQexAnimEvaluator* lEvaluator = pRoots.front()->GetScene()->GetEvaluator();
    KQexContextGuard   lContext(lEvaluator);
    try
    {
        KQexBvhWriter lWriter(*this, pOptions);
        lEvaluator->SetContext(nullptr);
        if (!lWriter.Prepare(pRoots))
        {
            Error("Out of memory\n");
            return false;
        }
        lEvaluator->SetContext(pOptions.mStack);
        lWriter.WriteHierarchy();
        const bool lOk = lWriter.WriteMotion();
        if (!lOk && GetOutput().HasFailed())
        {
            Error("Can't write %s (%s)\n", GetPath().c_str(), GetOutput().GetReason().c_str());
        }
        return lOk;
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
        return false;
    }
}

} // namespace qexsdk
