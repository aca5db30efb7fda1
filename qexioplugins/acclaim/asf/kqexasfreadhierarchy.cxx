#include <qexioplugins/acclaim/asf/kqexasfgrammar.h>
#include <qexioplugins/acclaim/asf/kqexasfnameindex.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <cstring>
#include <new>

namespace qexsdk
{

bool KQexFileAcclaimAsf::ReadHierarchy()
{
    if (!CheckRoot("Hierarchy before :root\n"))
    {
        return false;
    }
    InitTokens(smGroup);
    KQexAsfNameIndex  lOwnIndex;
    KQexAsfNameIndex& lIndex = mNameIndex != nullptr ? *mNameIndex : lOwnIndex;
    bool              lOk = false;
    try
    {
        lOk = ReadFamilies(lIndex);
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
    }
    lOwnIndex.RemoveNulls();
    return lOk;
}

bool KQexFileAcclaimAsf::ReadFamilies(KQexAsfNameIndex& pIndex)
{
    while (NextLine())
    {
        if (Check(smMain) != -1)
        {
            return true;
        }
        const int lGroup = Handle(smGroup);
        if (lGroup == eGROUP_END)
        {
            continue;
        }
        if (lGroup != eGROUP_BEGIN)
        {
            Warning("Begin/End keyword expected\n");
            continue;
        }
        pIndex.Update(mQexAsfScene->mRoot);
        if (!ReadFamilyLines(pIndex))
        {
            return false;
        }
    }
    return true;
}

/// Reads the lines up to the next "begin" or "end".
bool KQexFileAcclaimAsf::ReadFamilyLines(KQexAsfNameIndex& pIndex)
{
    while (NextLine() && Check(smGroup) == -1)
    {
        if (!ReadFamily(pIndex))
        {
            return false;
        }
    }
    return true;
}

bool KQexFileAcclaimAsf::ReadFamily(KQexAsfNameIndex& pIndex)
{
    char lName[kMaxName + 1];
    if (!ReadNameWord(lName))
    {
        Warning("Can't read parent bone name\n");
        return true;
    }
    // Bones are already children of the root.
    if (std::strcmp(lName, kRootName) == 0)
    {
        return true;
    }
    const int lParent = pIndex.Find(lName);
    if (lParent >= 0)
    {
        return ReadChildren(pIndex, lParent);
    }
    Error("Unknown parent bone name (%s)\n", lName);
    return false;
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
        {
            continue;
        }
        if (pIndex.IsBelow(pParent, lChild))
        {
            Warning("Bone under itself (%s)\n", lName);
        }
        else if (!pIndex.Move(lChild, pParent))
        {
            Error("Out of memory\n");
            return false;
        }
    }
    return true;
}

} // namespace qexsdk
