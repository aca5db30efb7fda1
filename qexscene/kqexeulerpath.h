#ifndef QEXSCENE_KQEXEULERPATH_H
#define QEXSCENE_KQEXEULERPATH_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeyblock.h>

namespace qexsdk
{

class KQexAnimCurve;

/// Shared by KQexAnimCurveFilterUnroll and KQexAnimCurveFilterGimbleKiller: walks three rotation curves and chooses for each key one
/// of the Euler triples that give its rotation. The curves change only in Close, so a failure before it changes nothing.
class QEX_API KQexEulerPath
{
public:
    /// \param pOrder order code of the math library.
    explicit KQexEulerPath(int pOrder);

    /// Opens three different curves with equal key times: the angles about x, y and z in degrees. False when the curves are not
    /// like that or memory runs out.
    bool Open(KQexAnimCurve** pCurves, int pCount);

    /// Chooses the triple of each key in order, nearest to the previous one.
    /// \param pUnlock whether to redistribute the outer angles of keys in gimbal lock.
    void Unroll(bool pUnlock);

    /// Writes the new values to the curves that change. Cannot fail.
    void Close();

private:
    /// A key's angles in degrees, in order of application.
    struct KTriple
    {
        double mAngle[3];
    };

    /// A run of consecutive keys in gimbal lock with the same LockSign.
    struct KLockedRun
    {
        int    mBefore = 0; ///< Last key with finite angles before the run.
        int    mFirst = 0;  ///< First key of the run.
        int    mEnd = 0;    ///< First key after the run.
        double mSign = 0.0; ///< LockSign of its keys; 0: no run.
    };

    bool    Read(int pKey, KTriple& pTriple) const;
    KTriple Chosen(int pKey) const;
    void    Choose(int pKey, const KTriple& pTriple);

    static KTriple AddTurns(const KTriple& pTriple, const KTriple& pBefore);
    KTriple        Nearest(const KTriple& pTriple, const KTriple& pBefore) const;
    double         LockSign(const KTriple& pTriple) const;
    void           ChooseLocked(int pKey, double pSign, const KTriple& pBefore, double pFree);
    bool           CanSpreadProportionally(const KLockedRun& pRun, double pFixedLength, double pFreeDelta) const;
    void           SpreadRun(const KLockedRun& pRun);

    int                 mAxis[3]; ///< Curve index of the first, middle and last axis.
    bool                mIsOdd;
    bool                mIsRepeated;
    int                 mKeyCount = 0;
    KQexAnimCurve*      mCurves[3] = {nullptr, nullptr, nullptr};
    KQexKeyBlock<float> mChosen[3]; ///< New values by curve, for the keys walked so far.
};

} // namespace qexsdk

#endif
