#include <qexioplugins/acclaim/kqexasfgrammar.h>
#include <qexioplugins/acclaim/kqexasfnameindex.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <cstring>

namespace qexsdk
{

bool KQexFileAcclaimAsf::ReadHierarchy()
{
    if (!CheckRoot("Hierarchy before :root\n"))
        return false;
    InitTokens(smGroup);
    if (mNameIndex != nullptr)
        return ReadFamilies(*mNameIndex);
    KQexAsfNameIndex lIndex;
    const bool       lOk = ReadFamilies(lIndex);
    return SettleFamilies(lIndex) && lOk;
}

/// Hangs the bones where the families said, also when reading them ended early.
bool KQexFileAcclaimAsf::SettleFamilies(KQexAsfNameIndex& pIndex)
{
    if (pIndex.Settle())
        return true;
    Error("Out of memory\n");
    return false;
}

bool KQexFileAcclaimAsf::ReadFamilies(KQexAsfNameIndex& pIndex)
{
    while (NextLine())
    {
        if (Check(smMain) != -1)
            return true;
        const int lGroup = Handle(smGroup);
        if (lGroup == eGROUP_END)
            continue;
        if (lGroup != eGROUP_BEGIN)
        {
            Warning("Begin/End keyword expected\n");
            continue;
        }
        if (!pIndex.Update(mQexAsfScene->mRoot))
        {
            Error("Out of memory\n");
            return false;
        }
        if (!ReadFamilyLines(pIndex))
            return false;
    }
    return true;
}

/// The lines up to the next "begin" or "end".
bool KQexFileAcclaimAsf::ReadFamilyLines(KQexAsfNameIndex& pIndex)
{
    for (;;)
    {
        int       lParent = KQexAsfNameIndex::kNone;
        const int lDone = ScanFamilies(pIndex, lParent);
        if (!NextLine() || Check(smGroup) != -1)
            return true;
        if (!(lDone > 0 ? ReadFamilyRest(pIndex, lDone, lParent) : ReadFamily(pIndex)))
            return false;
    }
}

bool KQexFileAcclaimAsf::ReadFamily(KQexAsfNameIndex& pIndex)
{
    char lName[kMaxName + 1];
    if (!ReadNameWord(lName))
    {
        Warning("Can't read parent bone name\n");
        return true;
    }
    // Bones already hang under the root.
    if (std::strcmp(lName, kRootName) == 0)
        return true;
    const int lParent = pIndex.Find(lName);
    if (lParent >= 0)
        return ReadChildren(pIndex, lParent);
    Error("Unknown parent bone name (%s)\n", lName);
    return false;
}

/// A line of the bone pParent whose first pDone words are done.
bool KQexFileAcclaimAsf::ReadFamilyRest(KQexAsfNameIndex& pIndex, int pDone, int pParent)
{
    char lName[kMaxName + 1];
    for (int i = 0; i < pDone; ++i)
        ReadNameWord(lName);
    return ReadChildren(pIndex, pParent);
}

bool KQexFileAcclaimAsf::ReadChildren(KQexAsfNameIndex& pIndex, int pParent)
{
    char lName[kMaxName + 1];
    while (HasToken() && ReadNameWord(lName))
    {
        const int lChild = pIndex.Find(lName);
        if (lChild < 0)
        {
            Error("Unknown child bone name (%s)\n", lName);
            return false;
        }
        // The first family that names a bone as a child wins.
        if (!pIndex.IsUnderRoot(lChild))
            continue;
        if (pIndex.IsBelow(pParent, lChild))
            Warning("Bone under itself (%s)\n", lName);
        else
            pIndex.Move(lChild, pParent);
    }
    return true;
}

} // namespace qexsdk
