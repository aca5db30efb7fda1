#ifndef TESTS_SUPPORT_FILEFAULTS_H
#define TESTS_SUPPORT_FILEFAULTS_H

#include <kbaselib/kbase/kfilecalls.h>

namespace qextest
{

/// Counts the file calls of the library while it lives, and lets one of them go wrong. One object at a time.
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

    /// Not an errno: read and write take a single byte, and go on well.
    static constexpr int kShort = -1;

    KFileFaults();
    ~KFileFaults();
    KFileFaults(const KFileFaults&) = delete;
    KFileFaults& operator=(const KFileFaults&) = delete;

    /// The call of \p pCall with number \p pNumber (from 1, counted from now) fails with \p pError, an errno or kShort; with
    /// \p pOnwards so do all behind it.
    void Fail(ECall pCall, int pNumber, int pError, bool pOnwards = false);

    /// Calls of \p pCall since construction or the last Fail().
    int GetCount(ECall pCall) const;
};

} // namespace qextest

#endif
