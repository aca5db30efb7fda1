#include <qexfigure/check/kqexfilemessages.h>

#include <algorithm>

namespace qexsdk
{

void KQexFileMessages::Add(KQexTextMessage::ESeverity pSeverity, int pLine, const std::string& pText)
{
    mList.push_back({pSeverity, pLine, pText});
    ++(pSeverity == KQexTextMessage::eERROR ? mErrors : mWarnings);
}

void KQexFileMessages::Add(const KQexFigureReport& pReport, const std::string& pPath)
{
    const std::string lOwn = pPath == "-" ? "<stdin>" : pPath;
    for (const KQexFigureMessage& lMessage : pReport.GetMessages())
    {
        if (lMessage.mSeverity != KQexFigureMessage::eNOTE)
        {
            const bool lIsError = lMessage.mSeverity == KQexFigureMessage::eERROR;
            const bool lIsOwn = lMessage.mPath.empty() || lMessage.mPath == lOwn;
            Add(lIsError ? KQexTextMessage::eERROR : KQexTextMessage::eWARNING, lIsOwn ? lMessage.mLine : 0,
                (lIsOwn ? std::string() : lMessage.mPath + ": ") + lMessage.mText);
        }
    }
}

void KQexFileMessages::KeepOnly(KQexTextMessage::ESeverity pSeverity)
{
    const auto lIsOther = [pSeverity](const KQexTextMessage& pMessage)
    {
        return pMessage.mSeverity != pSeverity;
    };
    mList.erase(std::remove_if(mList.begin(), mList.end(), lIsOther), mList.end());
}

void KQexFileMessages::SortByLine()
{
    std::stable_sort(mList.begin(), mList.end(),
                     [](const KQexTextMessage& pOne, const KQexTextMessage& pOther) { return pOne.mLine < pOther.mLine; });
}

void KQexFileMessages::Take(const KQexTextFile& pReader)
{
    mList = pReader.GetMessages();
    mErrors = pReader.GetErrorCount();
    mWarnings = pReader.GetWarningCount();
}

} // namespace qexsdk
