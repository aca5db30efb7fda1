#include <qexscene/kqexanimcurvefilter.h>

namespace qexsdk
{

KQexAnimCurveFilter::~KQexAnimCurveFilter() = default;

} // namespace qexsdk
