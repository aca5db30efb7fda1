#include <apps/asf/report/messagelog.h>

namespace asfapp
{

namespace
{

constexpr size_t kMaxKinds = 1000;

const char* WordOf(ESeverity pSeverity)
{
    return pSeverity == eERROR ? "error" : pSeverity == eWARNING ? "warning" : "note";
}

bool IsDigit(char pChar)
{
    return pChar >= '0' && pChar <= '9';
}

} // namespace

std::string KindOfMessage(std::string_view pText)
{
    std::string lKind;
    int         lDepth = 0;
    for (size_t i = 0; i < pText.size(); ++i)
    {
        const char lChar = pText[i];
        lDepth += lChar == '(' ? 1 : 0;
        if (lDepth == 0 && !(IsDigit(lChar) && !lKind.empty() && lKind.back() == '#'))
        {
            lKind += IsDigit(lChar) ? '#' : lChar;
        }
        lDepth -= lChar == ')' && lDepth > 0 ? 1 : 0;
    }
    while (!lKind.empty() && lKind.back() == ' ')
    {
        lKind.pop_back();
    }
    return lKind;
}

void KMessageLog::Add(ESeverity pSeverity, const std::string& pPath, int pLine, std::string_view pText)
{
    const std::string lKind = KindOfMessage(pText);
    const auto        lFound = mIndexOf.find(WordOf(pSeverity) + lKind);
    if (lFound != mIndexOf.end())
    {
        ++mKinds[lFound->second].mCount;
    }
    else if (mKinds.size() < kMaxKinds)
    {
        mIndexOf.emplace(WordOf(pSeverity) + lKind, mKinds.size());
        mKinds.push_back({pSeverity, lKind, 1, pPath, pLine, std::string(pText)});
    }
}

std::string KMessageLog::GetFirstError() const
{
    for (const KKind& lKind : mKinds)
    {
        if (lKind.mSeverity == eERROR)
        {
            return lKind.mText;
        }
    }
    return std::string();
}

KJson KMessageLog::ToJson() const
{
    KJson lList = KJson::array();
    for (const KKind& lKind : mKinds)
    {
        lList.push_back({{"severity", WordOf(lKind.mSeverity)},
                         {"kind", lKind.mKind},
                         {"count", lKind.mCount},
                         {"file", lKind.mPath},
                         {"line", lKind.mLine},
                         {"text", lKind.mText}});
    }
    return lList;
}

} // namespace asfapp
