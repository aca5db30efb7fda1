#include <qexscene/kqexanimcurvefilterunroll.h>

#include <qexscene/kqexeulerpath.h>

namespace qexsdk
{

bool KQexAnimCurveFilterUnroll::Apply(KQexAnimCurve** pCurves, int pCount)
{
    KQexEulerPath lPath(mOrder);
    if (!lPath.Open(pCurves, pCount))
    {
        return false;
    }
    lPath.Unroll(false);
    lPath.Close();
    return true;
}

} // namespace qexsdk
