#ifndef QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFCURVES_H
#define QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFCURVES_H

#include <qexioplugins/acclaim/kqexasfnode.h>

#include <vector>

namespace qexsdk
{

/// The sampled curves of one motion, apart from the bones they belong to: so several motions can be read before the first is
/// handed to host nodes. Owns what it holds.
class KQexAsfCurves
{
public:
    KQexAsfCurves() = default;
    ~KQexAsfCurves();
    /// Takes the curves over.
    KQexAsfCurves(KQexAsfCurves&& pOther) = default;
    KQexAsfCurves(const KQexAsfCurves&) = delete;
    KQexAsfCurves& operator=(const KQexAsfCurves&) = delete;

    /// Takes the curves of \p pRoot and of all bones below it. When memory runs out (std::bad_alloc) the bones keep theirs.
    void TakeFrom(HKQexAsfNode pRoot);

    /// Gives them back to the same tree, whose bones own none now.
    void GiveTo(HKQexAsfNode pRoot);

    /// Destroys all curves that \p pRoot and the bones below it own.
    static void Destroy(HKQexAsfNode pRoot);

    /// Whether \p pRoot or a bone below it owns a curve.
    static bool HasAny(HKQexAsfNode pRoot);

private:
    std::vector<KQexAnimCurve*> mCurves; ///< Six a bone in pre-order: translation x, y, z, rotation x, y, z; null where there is none.
};

} // namespace qexsdk

#endif
