#ifndef APPS_ASF_REPORT_FILESTAMP_H
#define APPS_ASF_REPORT_FILESTAMP_H

#include <apps/asf/report/jsontext.h>

#include <cstdint>
#include <string>

namespace asfapp
{

/// Size and modification time of a file.
struct KFileStamp
{
    uint64_t mSize = 0;
    int64_t  mModified = 0; ///< Nanoseconds since 1970.

    bool operator==(const KFileStamp& pOther) const { return mSize == pOther.mSize && mModified == pOther.mModified; }
    bool operator!=(const KFileStamp& pOther) const { return !(*this == pOther); }
};

/// False if there is no such regular file.
bool ReadStamp(const std::string& pPath, KFileStamp& pStamp);

/// {"file", "size", "modified"}
KJson JsonStamped(const std::string& pPath, const KFileStamp& pStamp);

/// What JsonStamped() made \p pValue of. False if that is none.
bool StampedFromJson(const KJson& pValue, std::string& pPath, KFileStamp& pStamp);

} // namespace asfapp

#endif
