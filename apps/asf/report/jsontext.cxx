#include <apps/asf/report/jsontext.h>

#include <algorithm>

namespace asfapp
{

using qexsdk::KQexTextMessage;

KJson JsonMessages(const qexsdk::KQexFileMessages& pMessages)
{
    KJson lMessages = KJson::array();
    for (const KQexTextMessage& lMessage : pMessages.mList)
    {
        const bool lError = lMessage.mSeverity == KQexTextMessage::eERROR;
        lMessages.push_back({{"severity", lError ? "error" : "warning"}, {"line", lMessage.mLine}, {"text", lMessage.mText}});
    }
    return lMessages;
}

KJson JsonHead(const char* pKind, const std::string& pPath, bool pOk, const qexsdk::KQexFileMessages& pMessages)
{
    const auto lError = std::find_if(pMessages.mList.begin(), pMessages.mList.end(),
                                     [](const KQexTextMessage& pMessage) { return pMessage.mSeverity == KQexTextMessage::eERROR; });
    KJson      lObject;
    lObject["schema"] = kJsonSchema;
    lObject["kind"] = pKind;
    lObject["file"] = pPath;
    lObject["ok"] = pOk;
    lObject["error"] = lError != pMessages.mList.end() ? KJson(lError->mText) : KJson(nullptr);
    lObject["errors"] = pMessages.mErrors;
    lObject["warnings"] = pMessages.mWarnings;
    lObject["messages"] = JsonMessages(pMessages);
    return lObject;
}

const char* JsonKind(const qexsdk::KQexFigureFile& pFile)
{
    return pFile.HasOwnMotion() ? "figure" : pFile.GetFormat() == qexsdk::eFIGURE_ASF ? "skeleton" : "motion";
}

KJson JsonPoint(const KPoint& pPoint)
{
    return KJson::array({pPoint.mX, pPoint.mY, pPoint.mZ});
}

void PrintJsonLine(const KJson& pObject, KConsole& pConsole)
{
    pConsole.Out(pObject.dump(-1, ' ', false, KJson::error_handler_t::replace) + "\n");
}

} // namespace asfapp
