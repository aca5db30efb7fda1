#include <apps/asf/report/filestamp.h>

#include <filesystem>

namespace asfapp
{

namespace fs = std::filesystem;

bool ReadStamp(const std::string& pPath, KFileStamp& pStamp)
{
    std::error_code lError;
    pStamp.mSize = fs::file_size(pPath, lError);
    pStamp.mModified = lError ? 0 : fs::last_write_time(pPath, lError).time_since_epoch().count();
    return !lError;
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
