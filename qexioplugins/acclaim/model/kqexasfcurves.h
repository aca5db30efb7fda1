#ifndef QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFCURVES_H
#define QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFCURVES_H

#include <qexioplugins/acclaim/kqexasfnode.h>

#include <vector>

namespace qexsdk
{

/// The sampled curves of one motion, detached from their bones, so that several motions can be read before the first is connected
/// to host nodes. Owns the curves.
class KQexAsfCurves
{
public:
    KQexAsfCurves() = default;
    ~KQexAsfCurves();
    /// Moves the curves.
    KQexAsfCurves(KQexAsfCurves&& pOther) = default;
    KQexAsfCurves(const KQexAsfCurves&) = delete;
    KQexAsfCurves& operator=(const KQexAsfCurves&) = delete;

    /// Moves the curves out of \p pRoot and all bones below it. When memory runs out (std::bad_alloc) the bones keep theirs.
    void MoveFrom(HKQexAsfNode pRoot);

    /// Moves them back into the same tree, whose bones must own none.
    void MoveTo(HKQexAsfNode pRoot);

    /// Destroys all curves that \p pRoot and the bones below it own.
    static void Destroy(HKQexAsfNode pRoot);

    /// Whether \p pRoot or a bone below it owns a curve.
    static bool HasAny(HKQexAsfNode pRoot);

private:
    std::vector<KQexAnimCurve*> mCurves; ///< Six per bone in pre-order: translation x, y, z, rotation x, y, z; null where there is none.
};

} // namespace qexsdk

#endif
