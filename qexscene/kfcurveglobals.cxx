#include <qexscene/kfcurveglobals.h>

#include <atomic>

namespace qexsdk
{

static std::atomic<int>  sRotationFilterToApply{0};
static std::atomic<bool> sUseConstantKeyReducer{false};

int KFCURVE_GetRotationFilterToApply()
{
    return sRotationFilterToApply.load(std::memory_order_relaxed);
}

void KFCURVE_SetRotationFilterToApply(int pFilter)
{
    sRotationFilterToApply.store(pFilter, std::memory_order_relaxed);
}

bool KFCURVE_GetUseConstantKeyReducer()
{
    return sUseConstantKeyReducer.load(std::memory_order_relaxed);
}

void KFCURVE_SetUseConstantKeyReducer(bool pUse)
{
    sUseConstantKeyReducer.store(pUse, std::memory_order_relaxed);
}

} // namespace qexsdk
