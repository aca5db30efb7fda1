// Reads skeletons with the installed library; fails when one of them cannot be read or has no root.

#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <cstdio>

int main(int pCount, char** pArguments)
{
    for (int lIndex = 1; lIndex < pCount; ++lIndex)
    {
        qexsdk::KQexFileAcclaimAsf lFile(true);
        qexsdk::KQexAsfScene       lSkeleton;
        if (!lFile.OpenRead(pArguments[lIndex]) || !lFile.Read(&lSkeleton, false, false, false) || lSkeleton.mRoot == nullptr)
        {
            return 1;
        }
        std::printf("%s: %d bones at the root\n", lSkeleton.mName, lSkeleton.mRoot->mChildBuf.GetCount());
    }
    return pCount > 1 ? 0 : 1;
}
