#include <tests/qexioplugins/acclaim/asf/asftestsupport.h>

#include <gtest/gtest.h>

namespace qextest
{

using namespace qexsdk;

KAsfReading::KAsfReading() : mScene(QexSdkNew<KQexAsfScene>()) {}

KAsfReading::~KAsfReading()
{
    mScene->Destroy();
}

bool KAsfReading::ReadText(std::string_view pText, bool pRemoveDummyNodes, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KQexFileAcclaimAsf lFile(false);
    EXPECT_TRUE(lFile.OpenReadBuffer(pText.data(), pText.size()));
    mOk = lFile.Read(mScene, pRemoveDummyNodes, pSetRotatePivotOffet, pSetPreRotation);
    EXPECT_EQ(lFile.mQexAsfScene, nullptr);
    mMessages = lFile.GetMessages();
    mWarningCount = lFile.GetWarningCount();
    mErrorCount = lFile.GetErrorCount();
    return mOk;
}

HKQexAsfNode KAsfReading::Bone(const char* pName) const
{
    return mScene->mRoot == nullptr ? nullptr : mScene->mRoot->Find(pName);
}

std::string KAsfReading::Messages() const
{
    std::string lText;
    for (const KQexTextMessage& lMessage : mMessages)
    {
        lText += MessageLine(lMessage) + "\n";
    }
    return lText;
}

std::string KAsfReading::Tree() const
{
    std::string lText;
    for (HKQexAsfNode lNode : PreOrder(mScene->mRoot))
    {
        lText += std::string(lNode->mName) + "<" + (lNode->mParent == nullptr ? "" : lNode->mParent->mName) + "\n";
    }
    return lText;
}

std::string WrittenText(HKQexAsfScene pScene)
{
    std::string        lText;
    KQexFileAcclaimAsf lFile(false);
    EXPECT_TRUE(lFile.OpenWriteBuffer(&lText));
    lFile.Write(pScene);
    EXPECT_EQ(lFile.mQexAsfScene, nullptr);
    EXPECT_TRUE(lFile.Close());
    return lText;
}

std::string MessageLine(const KQexTextMessage& pMessage)
{
    return (pMessage.mSeverity == KQexTextMessage::eERROR ? "E" : "W") + std::to_string(pMessage.mLine) + " " + pMessage.mText;
}

std::vector<HKQexAsfNode> PreOrder(HKQexAsfNode pRoot)
{
    std::vector<HKQexAsfNode> lNodes;
    std::vector<HKQexAsfNode> lStack;
    if (pRoot != nullptr)
    {
        lStack.push_back(pRoot);
    }
    while (!lStack.empty())
    {
        HKQexAsfNode lNode = lStack.back();
        lStack.pop_back();
        lNodes.push_back(lNode);
        for (int i = lNode->mChildBuf.GetCount(); i-- > 0;)
        {
            lStack.push_back(lNode->mChildBuf[i]);
        }
    }
    return lNodes;
}

} // namespace qextest
