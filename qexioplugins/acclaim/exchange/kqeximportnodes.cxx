#include <qexioplugins/acclaim/exchange/kqeximportnodes.h>

#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <new>
#include <string_view>
#include <unordered_map>

namespace qexsdk
{

namespace
{

/// Calls pDo(bone, node) for every bone and the node built from it.
template <typename TDo>
void ForBonesAndNodes(HKQexAsfNode pRoot, KQexNode* pNode, const TDo& pDo)
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
        pDo(*lBone, *lNode);
        lNext.push_back(lNode->GetFirstChild());
    }
}

/// The names by bone: empty for an end that was added.
std::unordered_map<std::string_view, const char*> NamesByBone(const std::vector<KQexAsfEndNote>& pNotes)
{
    std::unordered_map<std::string_view, const char*> lNames;
    for (const KQexAsfEndNote& lNote : pNotes)
    {
        lNames.emplace(lNote.mBone, lNote.mName.c_str());
    }
    return lNames;
}

} // namespace

void ConnectCurves(HKQexAsfNode pRoot, KQexNode* pNode, const char* pTakeName)
{
    ForBonesAndNodes(pRoot, pNode, [pTakeName](KQexAsfNode& pBone, KQexNode& pTo) { pBone.SetKFCurves(&pTo, pTakeName); });
}

void NameEnds(HKQexAsfNode pRoot, KQexNode* pNode, const std::vector<KQexAsfEndNote>& pNotes)
{
    const auto lNames = NamesByBone(pNotes);
    if (lNames.empty())
    {
        return;
    }
    ForBonesAndNodes(pRoot, pNode,
                     [&lNames](const KQexAsfNode& pBone, const KQexNode& pOf)
                     {
                         const auto lName = lNames.find(pBone.mName);
                         KQexNode*  lEnd = pBone.mChildBuf.GetCount() == 0 ? pOf.GetFirstChild() : nullptr;
                         if (lEnd == nullptr || lName == lNames.end() || *lName->second == '\0')
                         {
                             return;
                         }
                         lEnd->SetRotationActive(true);
                         if (!lEnd->SetName(lName->second))
                         {
                             throw std::bad_alloc();
                         }
                     });
}

KQexAddedEndGuard::KQexAddedEndGuard(HKQexAsfNode pRoot, const std::vector<KQexAsfEndNote>& pNotes)
{
    const auto  lNames = NamesByBone(pNotes);
    KQexAsfWalk lWalk(lNames.empty() ? nullptr : pRoot);
    while (const HKQexAsfNode lBone = lWalk.Next())
    {
        const auto lName = lWalk.IsEntering() && lBone->mChildBuf.GetCount() == 0 ? lNames.find(lBone->mName) : lNames.end();
        if (lName != lNames.end() && *lName->second == '\0')
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
