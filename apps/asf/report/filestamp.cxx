#include <apps/asf/report/filestamp.h>

#include <kbaselib/kbase/ksystem.h>

namespace asfapp
{

bool ReadStamp(const std::string& pPath, KFileStamp& pStamp)
{
    qexsdk::KFileInfo lInfo;
    if (!qexsdk::KGetFileInfo(pPath, lInfo) || lInfo.mKind != qexsdk::KFileInfo::eREGULAR)
    {
        return false;
    }
    pStamp.mSize = lInfo.mSize;
    pStamp.mModified = lInfo.mModified;
    return true;
}

KJson JsonStamped(const std::string& pPath, const KFileStamp& pStamp)
{
    return {{"file", JsonPath(pPath)}, {"size", pStamp.mSize}, {"modified", pStamp.mModified}};
}

bool StampedFromJson(const KJson& pValue, std::string& pPath, KFileStamp& pStamp)
{
    const auto lValue = [&pValue](const char* pKey)
    {
        const auto lFound = pValue.find(pKey);
        return lFound != pValue.end() && lFound->is_number_integer() ? lFound->get<int64_t>() : -1;
    };
    if (!pValue.is_object() || !pValue.contains("file") || lValue("size") < 0)
    {
        return false;
    }
    pStamp.mSize = static_cast<uint64_t>(lValue("size"));
    pStamp.mModified = lValue("modified");
    return PathFromJson(pValue["file"], pPath);
}

} // namespace asfapp
