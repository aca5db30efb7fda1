/// The skeleton reader, with the flags in the first byte, and the writer on what it read. Comments change nothing of it, but that every
/// line is read the slow way.

#include <fuzz/fuzzsupport.h>

#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <tests/support/comments.h>

#include <string>

using namespace qexsdk;

namespace
{

/// What reading the text gave: whether it could be read, the messages, and the skeleton as it is written.
std::string Outcome(const std::string& pText, int pFlags)
{
    const KQexAsfSceneOwner lScene(QexSdkNew<KQexAsfScene>());
    KQexFileAcclaimAsf      lFile(false);
    const bool              lOk = lFile.OpenReadBuffer(pText.data(), pText.size()) &&
                     lFile.Read(lScene.get(), (pFlags & 1) != 0, (pFlags & 2) != 0, (pFlags & 4) != 0);
    qexfuzz::Require(!lOk || lScene->mRoot != nullptr);
    std::string lResult = lOk ? "ok\n" : "failed\n";
    for (const KQexTextMessage& lMessage : lFile.GetMessages())
    {
        lResult += std::to_string(lMessage.mLine) + " " + lMessage.mText + "\n";
    }
    if (lScene->mRoot != nullptr)
    {
        std::string        lText;
        KQexFileAcclaimAsf lOut(false);
        qexfuzz::Require(lOut.OpenWriteBuffer(&lText));
        lOut.Write(lScene.get());
        qexfuzz::Require(lOut.Close());
        lResult += lText;
    }
    return lResult;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize)
{
    if (pSize == 0)
    {
        return 0;
    }
    const std::string lText(reinterpret_cast<const char*>(pData) + 1, pSize - 1);
    const std::string lOutcome = Outcome(lText, pData[0]);
    if (pSize < KLineReader::kMaxLine)
    {
        qexfuzz::Require(Outcome(qextest::Commented(lText), pData[0]) == lOutcome);
    }
    return 0;
}
