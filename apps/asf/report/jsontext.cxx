#include <apps/asf/report/jsontext.h>

#include <kbaselib/kbase/kutf8.h>

#include <algorithm>
#include <charconv>
#include <string_view>

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

KJson JsonPath(const std::string& pPath)
{
    static const char sDigits[] = "0123456789abcdef";
    std::string       lHex;
    bool              lIsText = true;
    for (size_t lAt = 0; lAt < pPath.size() && lIsText;)
    {
        const size_t lLength = qexsdk::KUtf8Length(std::string_view(pPath).substr(lAt));
        lIsText = lLength > 0;
        lAt += lLength;
    }
    if (lIsText)
    {
        return pPath;
    }
    for (const char lChar : pPath)
    {
        const auto lByte = static_cast<unsigned char>(lChar);
        lHex += sDigits[lByte >> 4];
        lHex += sDigits[lByte & 15];
    }
    return {{"hex", lHex}};
}

bool PathFromJson(const KJson& pValue, std::string& pPath)
{
    if (pValue.is_string())
    {
        pPath = pValue.get<std::string>();
        return true;
    }
    const auto lHex = pValue.is_object() ? pValue.find("hex") : pValue.end();
    if (!pValue.is_object() || lHex == pValue.end() || !lHex->is_string())
    {
        return false;
    }
    const std::string lDigits = lHex->get<std::string>();
    pPath.clear();
    for (size_t i = 0; i + 1 < lDigits.size(); i += 2)
    {
        unsigned   lByte = 0;
        const auto lEnd = std::from_chars(lDigits.data() + i, lDigits.data() + i + 2, lByte, 16);
        if (lEnd.ptr != lDigits.data() + i + 2)
        {
            return false;
        }
        pPath += static_cast<char>(lByte);
    }
    return lDigits.size() % 2 == 0;
}

const char* JsonKind(const qexsdk::KQexFigureFile& pFile)
{
    return pFile.HasOwnMotion() ? "figure" : pFile.GetFormat() == qexsdk::eFIGURE_ASF ? "skeleton" : "motion";
}

KJson JsonPoint(const KPoint& pPoint)
{
    return KJson::array({pPoint.mX, pPoint.mY, pPoint.mZ});
}

std::string JsonLine(const KJson& pObject)
{
    return pObject.dump(-1, ' ', false, KJson::error_handler_t::replace) + "\n";
}

void PrintJsonLine(const KJson& pObject, KConsole& pConsole)
{
    pConsole.Out(JsonLine(pObject));
}

} // namespace asfapp
