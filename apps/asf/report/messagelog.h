#ifndef APPS_ASF_REPORT_MESSAGELOG_H
#define APPS_ASF_REPORT_MESSAGELOG_H

#include <apps/asf/report/jsontext.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace asfapp
{

/// Messages by kind: those that differ only in numbers and in what is in parentheses are of one kind.
class KMessageLog
{
public:
    /// \p pLine: 0 for the file as a whole. Kinds after the 1000th are dropped.
    void Add(ESeverity pSeverity, const std::string& pPath, int pLine, std::string_view pText);

    /// The text of the first error; empty without one.
    std::string GetFirstError() const;

    /// A list of {"severity", "kind", "count", "file", "line", "text"}, of which the last three are those of the first message.
    KJson ToJson() const;

private:
    struct KKind
    {
        ESeverity   mSeverity = eNOTE;
        std::string mKind;
        long long   mCount = 0;
        std::string mPath;
        int         mLine = 0;
        std::string mText;
    };

    std::vector<KKind>                      mKinds;
    std::unordered_map<std::string, size_t> mIndexOf; ///< Of a kind, by severity and text.
};

} // namespace asfapp

#endif
