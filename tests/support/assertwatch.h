#ifndef TESTS_SUPPORT_ASSERTWATCH_H
#define TESTS_SUPPORT_ASSERTWATCH_H

#include <kbaselib/kbase/kassert.h>

#include <string>
#include <vector>

/// \file
/// Collecting the assertions that the library reports.

namespace qextest
{

/// One report, as KAssertFailed passed it to the handler.
struct KAssertReport
{
    std::string   mFile;
    std::string   mFunction;
    unsigned long mLine = 0;
    std::string   mText;
    bool          mHasFlag = false; ///< Whether the assertion has a flag, so that it is reported only once per process.
};

/// Collects the reports made during its lifetime. One instance at a time.
class KAssertWatch
{
public:
    KAssertWatch();
    ~KAssertWatch();
    KAssertWatch(const KAssertWatch&) = delete;
    KAssertWatch& operator=(const KAssertWatch&) = delete;

    const std::vector<KAssertReport>& GetReports() const { return mReports; }

private:
    static void Handle(const char* pFile, const char* pFunction, unsigned long pLine, const char* pText, bool* pHideForever);

    static KAssertWatch*       smCurrent;
    qexsdk::KAssertHandler     mBefore = nullptr;
    std::vector<KAssertReport> mReports;
};

} // namespace qextest

#endif
