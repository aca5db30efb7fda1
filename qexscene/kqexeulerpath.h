#ifndef QEXSCENE_KQEXEULERPATH_H
#define QEXSCENE_KQEXEULERPATH_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeyblock.h>

namespace qexsdk
{

class KQexAnimCurve;

/// What KQexAnimCurveFilterUnroll and KQexAnimCurveFilterGimbleKiller share: walks along three rotation curves and chooses at
/// each key one of the angle triples that give its rotation. The curves change in Close only, so whoever fails before has
/// changed nothing.
class QEX_API KQexEulerPath
{
public:
    /// \param pOrder order code of the math library.
    explicit KQexEulerPath(int pOrder);

    /// Takes three different curves with equal key times: the angles about x, y and z in degrees. False when they are not that
    /// or memory runs out.
    bool Open(KQexAnimCurve** pCurves, int pCount);

    /// Chooses the triple of every key in turn, nearest to the one before it.
    /// \param pShareInLock whether keys in gimbal lock share their two outer angles out anew.
    void Unroll(bool pShareInLock);

    /// Gives the curves their new values, those that changed. Cannot fail.
    void Close();

private:
    /// A key's angles in degrees, in order of application.
    struct KTriple
    {
        double mAngle[3];
    };

    /// Keys in gimbal lock, one after the other, in the same way.
    struct KRun
    {
        int    mBefore = 0; ///< The last key with finite angles before them.
        int    mFirst = 0;  ///< The first of them.
        int    mEnd = 0;    ///< The key behind them.
        double mSign = 0.0; ///< Their LockSign; 0 while there are none.
    };

    bool    Read(int pKey, KTriple& pTriple) const;
    KTriple Chosen(int pKey) const;
    void    Choose(int pKey, const KTriple& pTriple);

    static KTriple Turned(const KTriple& pTriple, const KTriple& pBefore);
    KTriple        Nearest(const KTriple& pTriple, const KTriple& pBefore) const;
    double         LockSign(const KTriple& pTriple) const;
    void           PlaceInLock(int pKey, double pSign, const KTriple& pBefore, double pFree);
    bool           IsProportionalSafe(const KRun& pRun, double pFixed, double pWay) const;
    void           SpreadRun(const KRun& pRun);

    int                 mAxis[3]; ///< Index of the curve of the first, the middle and the last axis.
    bool                mIsOdd;
    bool                mIsRepeated;
    int                 mKeyCount = 0;
    KQexAnimCurve*      mCurves[3] = {nullptr, nullptr, nullptr};
    KQexKeyBlock<float> mChosen[3]; ///< New values by curve, up to the key that the walk has reached.
};

} // namespace qexsdk

#endif
