// Prints how many bones a skeleton's root has, and the lengths of those of the left leg in centimetres.

#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <cstdio>

using namespace qexsdk;

int main(int pCount, char** pArguments)
{
    KQexFileAcclaimAsf lFile(true); // messages go to standard error as "file:line: warning: text"
    KQexAsfScene       lSkeleton;
    if (pCount != 2 || !lFile.OpenRead(pArguments[1]) || !lFile.Read(&lSkeleton, false, false, false))
    {
        return 1;
    }
    KQexAsfNode* lRoot = lSkeleton.GetRootNode();
    std::printf("%s: %d bones at the root\n", lSkeleton.GetName(), lRoot->mChildBuf.GetCount());
    for (const char* lName : {"left_thigh", "left_shin", "left_foot"})
    {
        if (const KQexAsfNode* lBone = lRoot->Find(lName))
        {
            std::printf("%-10s %6.2f cm\n", lBone->mName, lBone->mLength);
        }
    }
    return 0;
}
