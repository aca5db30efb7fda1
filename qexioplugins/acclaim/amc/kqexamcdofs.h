#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCDOFS_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCDOFS_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexscene/kqexdoftrack.h>

#include <cstdint>
#include <vector>

namespace qexsdk
{

/// Keeps the values of a motion's degrees of freedom as the file has them, and passes its frames on. A bone that a frame lacks keeps its
/// last values, 0 before the first; the cost is linear in the file's lines.
class KQexAmcDofs : public KQexAmcVisitor
{
public:
    /// \p pNext must outlive it.
    explicit KQexAmcDofs(KQexAmcVisitor& pNext) : mNext(pNext) {}

    /// Whether \p pNext's is true. May throw std::bad_alloc.
    bool Frame(const KQexAmcFrame& pFrame) override;

    /// The values of all frames into \p pValues, which is empty. May throw std::bad_alloc.
    void Finish(KQexDofValues& pValues);

private:
    struct KBone
    {
        HKQexAsfNode mNode = nullptr;
        int          mFirst = 0; ///< Index of its first degree of freedom.
        long long    mLast = -1; ///< Index, among the frames in order, of its last line; -1 for none.
    };

    struct KLateValue
    {
        int          mDof;
        std::int64_t mTime;
        float        mValue;
    };

    void  AddBones(const std::vector<KQexAmcBone>& pBones);
    void  AddLine(KBone& pBone, const KQexAmcFrame& pFrame, const double* pValues);
    void  Hold(const KBone& pBone);
    void  Set(int pDof, KTime pTime, float pValue);
    void  MergeLate(int pDof, const KLateValue* pBegin, const KLateValue* pEnd);
    float ToScene(const KBone& pBone, int pDof, const KQexAmcFrame& pFrame, double pValue) const;

    KQexAmcVisitor&           mNext;
    std::vector<KBone>        mBones;     ///< In the order of KQexAmcFrame::mBones.
    std::vector<KQexKeyStore> mKeys;      ///< One for each degree of freedom.
    std::vector<KLateValue>   mLate;      ///< In file order.
    long long                 mCount = 0; ///< Frames in order so far.
    KTime                     mFirst;     ///< Time of the first of them.
    KTime                     mPrevious;  ///< Time of the last of them.
};

} // namespace qexsdk

#endif
