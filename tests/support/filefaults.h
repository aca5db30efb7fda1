#ifndef TESTS_SUPPORT_FILEFAULTS_H
#define TESTS_SUPPORT_FILEFAULTS_H

#include <kbaselib/kbase/ksystem.h>

namespace qextest
{

/// Counts the library's file calls during its lifetime and makes one of them fail. One instance at a time.
class KFileFaults
{
public:
    enum ECall
    {
        eOPEN,
        eREAD,
        eWRITE,
        eCLOSE,
        eSEEK,
        eSTAT,
        eACCESS,
        eREAD_LINK,
        eCHANGE_MODE,
        eRENAME,
        eLINK,
        eUNLINK,
        eCALLS
    };

    /// Not an errno: read and write transfer a single byte and succeed.
    static constexpr int kShort = -1;

    KFileFaults();
    ~KFileFaults();
    KFileFaults(const KFileFaults&) = delete;
    KFileFaults& operator=(const KFileFaults&) = delete;

    /// Makes call number \p pNumber of kind \p pCall (from 1, counted from now) fail with \p pError, an errno or kShort; with
    /// \p pAndLater also all later ones.
    void Fail(ECall pCall, int pNumber, int pError, bool pAndLater = false);

    /// Calls of \p pCall since construction or the last Fail().
    int GetCount(ECall pCall) const;
};

} // namespace qextest

#endif
