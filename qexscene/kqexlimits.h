#ifndef QEXSCENE_KQEXLIMITS_H
#define QEXSCENE_KQEXLIMITS_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexvector4.h>

namespace qexsdk
{

/// Limits of one part of a node's transform: a minimum and a maximum per axis, each enabled separately, in the unit of that part
/// (centimetres, degrees, or factors). By default all are inactive and zero.
class QEX_API KQexLimits
{
public:
    /// Enables or disables all six limits together.
    void SetActive(bool pActive) { mActive = pActive; }
    /// Whether the limits are enabled at all.
    bool GetActive() const { return mActive; }

    /// Which minima are active, by axis.
    void SetLimitMinActive(bool pX, bool pY, bool pZ) { mMin.SetActive(pX, pY, pZ); }
    /// Which minima are active, if GetActive() is true.
    void GetLimitMinActive(bool& pX, bool& pY, bool& pZ) const { mMin.GetActive(pX, pY, pZ); }

    /// Which maxima are active, by axis.
    void SetLimitMaxActive(bool pX, bool pY, bool pZ) { mMax.SetActive(pX, pY, pZ); }
    /// Which maxima are active, if GetActive() is true.
    void GetLimitMaxActive(bool& pX, bool& pY, bool& pZ) const { mMax.GetActive(pX, pY, pZ); }

    /// The minima x, y, z, active or not; w is ignored, and returned as 0.
    void SetLimitMin(const KQexVector4& pLimit) { mMin.SetLimit(pLimit); }
    /// The minima, active or not.
    KQexVector4 GetLimitMin() const { return mMin.mLimit; }

    /// The maxima x, y, z, active or not; w is ignored, and returned as 0.
    void SetLimitMax(const KQexVector4& pLimit) { mMax.SetLimit(pLimit); }
    /// The maxima, active or not.
    KQexVector4 GetLimitMax() const { return mMax.mLimit; }

private:
    /// The minima or the maxima.
    struct KBound
    {
        void SetActive(bool pX, bool pY, bool pZ)
        {
            mAxisActive[0] = pX;
            mAxisActive[1] = pY;
            mAxisActive[2] = pZ;
        }
        void GetActive(bool& pX, bool& pY, bool& pZ) const
        {
            pX = mAxisActive[0];
            pY = mAxisActive[1];
            pZ = mAxisActive[2];
        }
        void SetLimit(const KQexVector4& pLimit) { mLimit = KQexVector4(pLimit[0], pLimit[1], pLimit[2]); }

        KQexVector4 mLimit;
        bool        mAxisActive[3] = {false, false, false};
    };

    KBound mMin;
    KBound mMax;
    bool   mActive = false;
};

} // namespace qexsdk

#endif
