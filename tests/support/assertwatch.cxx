#include <tests/support/assertwatch.h>

namespace qextest
{

KAssertWatch* KAssertWatch::smCurrent = nullptr;

KAssertWatch::KAssertWatch()
{
    smCurrent = this;
    mBefore = qexsdk::KAssertSetHandler(Handle);
}

KAssertWatch::~KAssertWatch()
{
    qexsdk::KAssertSetHandler(mBefore);
    smCurrent = nullptr;
}

void KAssertWatch::Handle(const char* pFile, const char* pFunction, unsigned long pLine, const char* pText, bool* pHideForever)
{
    smCurrent->mReports.push_back({pFile, pFunction, pLine, pText, pHideForever != nullptr});
}

} // namespace qextest
