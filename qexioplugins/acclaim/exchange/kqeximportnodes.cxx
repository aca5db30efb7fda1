#include <qexioplugins/acclaim/exchange/kqeximportnodes.h>

#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <string_view>
#include <unordered_set>

namespace qexsdk
{

void ConnectCurves(HKQexAsfNode pRoot, KQexNode* pNode, const char* pTakeName)
{
    std::vector<KQexNode*> lNext; // For each bone on the current path: the node of its next child.
    KQexAsfWalk            lWalk(pRoot);
    while (const HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lNext.pop_back();
            continue;
        }
        KQexNode* lNode = pNode;
        if (!lNext.empty())
        {
            lNode = lNext.back();
            lNext.back() = lNode->GetNextSibling();
        }
        lBone->SetKFCurves(lNode, pTakeName);
        lNext.push_back(lNode->GetFirstChild());
    }
}

KQexAddedEndGuard::KQexAddedEndGuard(HKQexAsfNode pRoot, const std::vector<std::string>& pBones)
{
    const std::unordered_set<std::string_view> lBones(pBones.begin(), pBones.end());
    KQexAsfWalk                                lWalk(lBones.empty() ? nullptr : pRoot);
    while (const HKQexAsfNode lBone = lWalk.Next())
    {
        if (lWalk.IsEntering() && lBone->mChildBuf.GetCount() == 0 && lBones.count(lBone->mName) > 0)
        {
            mLengths.emplace_back(lBone, lBone->mLength);
        }
    }
    for (const auto& [lBone, lLength] : mLengths)
    {
        lBone->mLength = 0.0;
    }
}

KQexAddedEndGuard::~KQexAddedEndGuard()
{
    for (const auto& [lBone, lLength] : mLengths)
    {
        lBone->mLength = lLength;
    }
}

} // namespace qexsdk
