// Reads a skeleton and a motion, and prints the position of a bone once per second: example_hand SKELETON.asf MOTION.amc BONE

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <cstdio>

using namespace qexsdk;

int main(int pCount, char** pArguments)
{
    KQexScene*               lScene = KQexScene::Create("walk"); // owns every node and curve
    KQexImportAcclaimOptions lOptions;
    KQexImportAcclaimResult  lResult;
    lOptions.mVerbose = true;
    if (pCount == 4 && KQexImporterAcclaim::Import(lScene, pArguments[1], pArguments[2], lOptions, lResult))
    {
        const KQexNode* lHand = lResult.mRootNode->FindChild(pArguments[3], true, false);
        for (KTime lTime; lHand != nullptr && lTime <= lResult.mTakes[0].mInfo.mStop; lTime += KTime::FromSeconds(1.0))
        {
            const KQexVector4 lPosition = lScene->GetEvaluator()->GetNodeGlobalTransform(lHand, lTime).mData[3];
            std::printf("%5.2f s: %7.2f %7.2f %7.2f cm\n", lTime.GetSeconds(), lPosition[0], lPosition[1], lPosition[2]);
        }
    }
    lScene->Destroy();
    return lResult.mOk ? 0 : 1;
}
