/// Fuzzes the skeleton reader, and the writer with its result. Input: a byte of read flags, a skeleton.

#include <fuzz/fuzzsupport.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <string>

using namespace qexsdk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize)
{
    if (pSize == 0)
    {
        return 0;
    }
    const int               lFlags = pData[0];
    const KQexAsfSceneOwner lScene(QexSdkNew<KQexAsfScene>());
    KQexFileAcclaimAsf      lFile(false);
    const bool              lOk = lFile.OpenReadBuffer(reinterpret_cast<const char*>(pData) + 1, pSize - 1) &&
                     lFile.Read(lScene.get(), (lFlags & 1) != 0, (lFlags & 2) != 0, (lFlags & 4) != 0);
    qexfuzz::Require(!lOk || lScene->mRoot != nullptr);
    if (lScene->mRoot != nullptr)
    {
        std::string        lText;
        KQexFileAcclaimAsf lOut(false);
        qexfuzz::Require(lOut.OpenWriteBuffer(&lText));
        lOut.Write(lScene.get());
        qexfuzz::Require(lOut.Close());
    }
    return 0;
}
