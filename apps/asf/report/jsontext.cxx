#include <apps/asf/report/jsontext.h>

namespace asfapp
{

KJson JsonHead(const char* pKind, const std::string& pPath, bool pOk, const KMessages& pMessages)
{
    KJson lMessages = KJson::array();
    for (const qexsdk::KQexTextMessage& lMessage : pMessages.mList)
    {
        const bool lError = lMessage.mSeverity == qexsdk::KQexTextMessage::eERROR;
        lMessages.push_back({{"severity", lError ? "error" : "warning"}, {"line", lMessage.mLine}, {"text", lMessage.mText}});
    }
    KJson lObject;
    lObject["schema"] = kJsonSchema;
    lObject["kind"] = pKind;
    lObject["file"] = pPath;
    lObject["ok"] = pOk;
    lObject["errors"] = pMessages.mErrors;
    lObject["warnings"] = pMessages.mWarnings;
    lObject["messages"] = lMessages;
    return lObject;
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
