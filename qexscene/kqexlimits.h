#ifndef QEXSCENE_KQEXLIMITS_H
#define QEXSCENE_KQEXLIMITS_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexvector4.h>

namespace qexsdk
{

/// The range that one part of a node's transform keeps to: per axis a minimum and a maximum, each with its own switch. In
/// the unit of that part: centimetres, degrees, or factors. A plain value. Nothing active and all bounds zero by default.
class QEX_API KQexLimits
{
public:
    /// The switch over all six bounds.
    void SetActive(bool pActive) { mActive = pActive; }
    /// Whether any bound holds.
    bool GetActive() const { return mActive; }

    /// Which of the minima hold, by axis.
    void SetLimitMinActive(bool pX, bool pY, bool pZ) { mMin.SetActive(pX, pY, pZ); }
    /// Which of the minima hold, while GetActive() is true.
    void GetLimitMinActive(bool& pX, bool& pY, bool& pZ) const { mMin.GetActive(pX, pY, pZ); }

    /// Which of the maxima hold, by axis.
    void SetLimitMaxActive(bool pX, bool pY, bool pZ) { mMax.SetActive(pX, pY, pZ); }
    /// Which of the maxima hold, while GetActive() is true.
    void GetLimitMaxActive(bool& pX, bool& pY, bool& pZ) const { mMax.GetActive(pX, pY, pZ); }

    /// The minima x, y, z, whether they hold or not; the w given is dropped, the w returned is 0.
    void SetLimitMin(const KQexVector4& pLimit) { mMin.SetLimit(pLimit); }
    /// The minima as they were set.
    KQexVector4 GetLimitMin() const { return mMin.mLimit; }

    /// The maxima x, y, z, likewise.
    void SetLimitMax(const KQexVector4& pLimit) { mMax.SetLimit(pLimit); }
    /// The maxima as they were set.
    KQexVector4 GetLimitMax() const { return mMax.mLimit; }

private:
    /// One end of the range.
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
