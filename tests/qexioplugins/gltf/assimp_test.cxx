#include <tests/qexioplugins/gltf/assimpscene.h>
#include <tests/qexioplugins/gltf/convertedmotion.h>

using namespace qextest;

namespace
{

TEST(Assimp, MatchesTheWorldPositions)
{
    const KTempDir lFolder;
    for (const KCorpusPair& lPair : PairsWithWorldPositions())
    {
        SCOPED_TRACE(lPair.mName);
        const KConvertedMotion lFiles(lPair, lFolder);
        const KAssimpScene     lBvh(lFiles.mBvh);
        const KAssimpScene     lGlb(lFiles.mGlb);
        double                 lBvhLargest = 0.0;
        double                 lGlbLargest = 0.0;
        for (const KWorldFrame& lFrame : lFiles.mWorld)
        {
            const double lSeconds = lFiles.SecondsOf(lFrame);
            lBvhLargest = std::max(lBvhLargest, LargestDistance(lFrame, lBvh.PositionsAt(0, lSeconds), 1.0));
            lGlbLargest = std::max(lGlbLargest, LargestDistance(lFrame, lGlb.PositionsAt(0, lSeconds), 100.0));
        }
        ReportDistance(lPair.mName + "_assimp_bvh", lBvhLargest);
        ReportDistance(lPair.mName + "_assimp_glb", lGlbLargest);
    }
}

} // namespace
