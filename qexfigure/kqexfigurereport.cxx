#include <qexfigure/kqexfigurereport.h>

#include <algorithm>
#include <exception>

namespace qexsdk
{

void KQexFigureReport::Add(KQexFigureMessage::ESeverity pSeverity, std::string_view pPath, int pLine, std::string_view pText) noexcept
{
    try
    {
        mMessages.push_back({pSeverity, std::string(pPath), pLine, std::string(pText)});
    }
    catch (const std::exception&)
    {
        SetOutOfMemory();
    }
}

void KQexFigureReport::Add(std::string_view pPath, const KQexTextMessage& pMessage) noexcept
{
    const bool lIsError = pMessage.mSeverity == KQexTextMessage::eERROR;
    Add(lIsError ? KQexFigureMessage::eERROR : KQexFigureMessage::eWARNING, pPath, pMessage.mLine, pMessage.mText);
}

bool KQexFigureReport::Fail(KQexFigureStatus pStatus, std::string_view pPath, std::string_view pText) noexcept
{
    Add(KQexFigureMessage::eERROR, pPath, 0, pText);
    Raise(pStatus);
    return false;
}

void KQexFigureReport::Raise(KQexFigureStatus pStatus) noexcept
{
    mStatus = std::max(mStatus, pStatus);
}

void KQexFigureReport::SetOutOfMemory() noexcept
{
    mIsOutOfMemory = true;
    Raise(eFIGURE_SYSTEM);
}

std::string KQexKindOfMessage(std::string_view pText)
{
    std::string lKind;
    int         lDepth = 0;
    for (size_t i = 0; i < pText.size(); ++i)
    {
        const char lChar = pText[i];
        const bool lIsDigit = lChar >= '0' && lChar <= '9';
        lDepth += lChar == '(' ? 1 : 0;
        if (lDepth == 0 && !(lIsDigit && !lKind.empty() && lKind.back() == '#'))
        {
            lKind += lIsDigit ? '#' : lChar;
        }
        lDepth -= lChar == ')' && lDepth > 0 ? 1 : 0;
    }
    while (!lKind.empty() && lKind.back() == ' ')
    {
        lKind.pop_back();
    }
    return lKind;
}

} // namespace qexsdk
