#include <qexscene/kqexanimcurvefiltergimblekiller.h>

#include <qexscene/kqexeulerpath.h>

namespace qexsdk
{

bool KQexAnimCurveFilterGimbleKiller::Apply(KQexAnimCurve** pCurves, int pCount)
{
    KQexEulerPath lPath(mOrder);
    if (!lPath.Open(pCurves, pCount))
    {
        return false;
    }
    lPath.Unroll(true);
    lPath.Close();
    return true;
}

} // namespace qexsdk
