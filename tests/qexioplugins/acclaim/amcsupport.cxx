#include <tests/qexioplugins/acclaim/amcsupport.h>

#include <gtest/gtest.h>

#include <sstream>

namespace qextest
{

using namespace qexsdk;

const char* const kSmallAsf = R"(:version 1.10
:name small
:units
  mass 1.0
  length 2.54
  angle deg
:documentation
:root
  axis XYZ
  order TX
  position 0 0 0
  orientation 0 0 0
:bonedata
  begin
    id 1
    name a
    direction 0 1 0
    length 2
    axis 0 0 0 XYZ
    dof rx ry
  end
  begin
    id 2
    name b
    direction 1 0 0
    length 3
    axis 0 0 0 XYZ
    dof rx
  end
  begin
    id 3
    name c
    direction 0 0 1
    length 1
    axis 0 0 0 XYZ
    dof rz l ry
  end
  begin
    id 4
    name d
    direction 0 -1 0
    length 1
    axis 0 0 0 XYZ
  end
:hierarchy
  begin
    root a d
    a b
    b c
  end
)";

std::string SmallFrame(long long pNumber, double pValue)
{
    std::ostringstream lText;
    lText << pNumber << "\nroot " << pValue << "\na " << pValue + 1 << ' ' << pValue + 2 << "\nb " << pValue + 3 << "\nc " << pValue + 4
          << " 99 " << pValue + 5 << '\n';
    return lText.str();
}

std::string Texts(const std::vector<KQexTextMessage>& pMessages)
{
    std::ostringstream lText;
    for (const KQexTextMessage& lMessage : pMessages)
    {
        lText << (lMessage.mSeverity == KQexTextMessage::eERROR ? 'E' : 'W') << lMessage.mLine << ' ' << lMessage.mText << '\n';
    }
    return lText.str();
}

std::string Texts(const std::vector<KQexImportMessage>& pMessages)
{
    std::vector<KQexTextMessage> lMessages;
    for (const KQexImportMessage& lMessage : pMessages)
    {
        lMessages.push_back(lMessage.mMessage);
    }
    return Texts(lMessages);
}

KQexAsfSceneOwner ReadSmallAsf(const std::string& pText, KQexImportAcclaimResult& pResult, const KQexImportAcclaimOptions& pOptions)
{
    KQexAsfSceneOwner lScene =
        KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::Buffer(pText.data(), pText.size(), "small.asf"), pOptions, pResult);
    EXPECT_NE(lScene, nullptr) << Texts(pResult.mMessages);
    return lScene;
}

bool KFrameLog::Frame(const KQexAmcFrame& pFrame)
{
    if (mStopAfter >= 0 && mCount >= mStopAfter)
    {
        return false;
    }
    EXPECT_EQ(pFrame.mIndex, mCount);
    ++mCount;
    mLengthFactor = pFrame.mLengthFactor;
    mAngleFactor = pFrame.mAngleFactor;

    std::ostringstream lText;
    lText << pFrame.mNumber << '@' << static_cast<double>(pFrame.mTime.Get()) / 5880000.0 << (pFrame.mLate ? " late" : "");
    for (const int lIndex : *pFrame.mPresent)
    {
        const KQexAmcBone& lBone = (*pFrame.mBones)[static_cast<size_t>(lIndex)];
        EXPECT_EQ(lBone.mFrame, pFrame.mIndex);
        lText << ' ' << lBone.mNode->mName;
        for (int i = 0; i < lBone.mNode->mOrderCount; ++i)
        {
            lText << (i == 0 ? '(' : ' ') << lBone.mValues[i];
        }
        lText << ')';
    }
    mText += lText.str() + '\n';
    return true;
}

} // namespace qextest
