// Another axis as up.

#include <qexclip/kqexclipedit.h>
#include <qexclip/kqexclipsteps.h>

#include <utility>
#include <vector>

namespace qexsdk
{

namespace
{

/// Writes \p pNumbers in axes turned by a quarter turn about x: (x, y, z) becomes (x, -z, y), or back. Exact.
void TurnVector(float* pNumbers, bool pBack)
{
    std::swap(pNumbers[1], pNumbers[2]);
    float& lNegated = pNumbers[pBack ? 2 : 1];
    lNegated = 0.0F - lNegated; // Not -0.
}

void TurnAll(std::vector<float>& pNumbers, size_t pSize, size_t pVectorAt, bool pBack)
{
    for (size_t i = 0; i < pNumbers.size(); i += pSize)
    {
        TurnVector(&pNumbers[i + pVectorAt], pBack);
    }
}

bool TurnAxes(const KQexClip& pClip, bool pBack, KQexClip& pResult)
{
    return pClip.GetJointCount() > 0 && KMakeClip(pClip, pResult,
                                                  [pBack](KQexClipData& pData)
                                                  {
                                                      for (KQexJointTransform& lRest : pData.mRest)
                                                      {
                                                          TurnVector(lRest.mRotation + 1, pBack);
                                                          TurnVector(lRest.mTranslation, pBack);
                                                          std::swap(lRest.mScaling[1], lRest.mScaling[2]);
                                                      }
                                                      TurnAll(pData.mRotations, 4, 1, pBack);
                                                      TurnAll(pData.mTranslations, 3, 0, pBack);
                                                      for (size_t i = 0; i < pData.mScalings.size(); i += 3)
                                                      {
                                                          std::swap(pData.mScalings[i + 1], pData.mScalings[i + 2]);
                                                      }
                                                      return true;
                                                  });
}

} // namespace

bool KQexClipMakeZUp(const KQexClip& pClip, KQexClip& pResult)
{
    return TurnAxes(pClip, false, pResult);
}

bool KQexClipMakeYUp(const KQexClip& pClip, KQexClip& pResult)
{
    return TurnAxes(pClip, true, pResult);
}

} // namespace qexsdk
