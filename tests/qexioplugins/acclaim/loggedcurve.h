#ifndef TESTS_QEXIOPLUGINS_ACCLAIM_LOGGEDCURVE_H
#define TESTS_QEXIOPLUGINS_ACCLAIM_LOGGEDCURVE_H

#include <qexscene/kqexanimcurve.h>

#include <string>
#include <vector>

namespace qextest
{

/// Logs its destruction and the flags.
class KLoggedCurve : public qexsdk::KQexAnimCurve
{
public:
    /// A curve of \p pScene, which may be null. \p pLog outlives the curve.
    KLoggedCurve(qexsdk::KQexScene* pScene, const std::string& pName, std::vector<std::string>& pLog)
        : KQexAnimCurve(pScene, pName.c_str()), mLog(pLog)
    {
    }

    void Destroy(bool pRecursive, bool pDependents) override
    {
        mLog.push_back(std::string(GetName()) + (pRecursive || pDependents ? " with a flag" : ""));
        KQexAnimCurve::Destroy(pRecursive, pDependents);
    }

private:
    std::vector<std::string>& mLog;
};

} // namespace qextest

#endif
