#include <apps/asf/report/messagelog.h>

#include <qexfigure/kqexfigurereport.h>

namespace asfapp
{

namespace
{

constexpr size_t kMaxKinds = 1000;

const char* WordOf(ESeverity pSeverity)
{
    return pSeverity == eERROR ? "error" : pSeverity == eWARNING ? "warning" : "note";
}

} // namespace

void KMessageLog::Add(ESeverity pSeverity, const std::string& pPath, int pLine, std::string_view pText)
{
    const std::string lKind = qexsdk::KQexKindOfMessage(pText);
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
