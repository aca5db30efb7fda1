#include <tests/faults/faultstage.h>

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

namespace qextest
{

using namespace qexsdk;

void KStage::ImportMotion()
{
    KQexImportAcclaimResult lResult;
    ASSERT_TRUE(KQexImporterAcclaim::Import(mScene.get(), KQexAcclaimSource::File(mFiles.In("a.asf")),
                                            {KQexAcclaimSource::File(mFiles.In("a.amc"))}, KQexImportAcclaimOptions(), lResult));
    mRoots = {lResult.mRootNode};
}

std::string KStage::Describe() const
{
    std::string        lText = mFrameHash + " " + std::to_string(mScene->GetObjectCount()) + "\n";
    KQexAnimEvaluator* lEvaluator = mScene->GetEvaluator();
    KQexAnimStack*     lOldContext = lEvaluator->GetContext();
    KQexNode*          lRoot = mScene->GetRootNode();
    lText += lOldContext != nullptr ? lOldContext->GetName() : "no take";
    for (int lStack = -1; lStack < mScene->GetAnimStackCount(); ++lStack)
    {
        lEvaluator->SetContext(lStack < 0 ? nullptr : mScene->GetAnimStack(lStack));
        lText += lStack < 0 ? "" : std::string("\n") + mScene->GetAnimStack(lStack)->GetName() + "\n";
        for (KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
        {
            lText += lNode->GetName();
            for (const int lFrame : {0, 1, 2, 7, 1000, 1999, 2001})
            {
                const KQexMatrix lTransform = lEvaluator->GetNodeGlobalTransform(lNode, FrameTime(lFrame));
                lText.append(reinterpret_cast<const char*>(&lTransform), sizeof lTransform);
            }
        }
    }
    lEvaluator->SetContext(lOldContext);
    if (mSkeleton && mSkeleton->mRoot != nullptr)
    {
        KQexFileAcclaimAsf lFile(false);
        std::string        lAsf;
        lFile.OpenWriteBuffer(&lAsf);
        lFile.Write(mSkeleton.get());
        lFile.Close();
        lText += lAsf;
    }
    return lText;
}

} // namespace qextest
