#include <qexscene/kfcurveglobals.h>

#include <atomic>

namespace qexsdk
{

static std::atomic<int>  sRotationFilterToApply{0};
static std::atomic<bool> sUseConstantKeyReducer{false};

static thread_local const KQexCurveSettings* sOfThread = nullptr;

KQexCurveSettings::KQexCurveSettings(int pRotationFilter, bool pUseConstantKeyReducer)
    : mRotationFilter(pRotationFilter), mUseConstantKeyReducer(pUseConstantKeyReducer), mBefore(sOfThread)
{
    sOfThread = this;
}

KQexCurveSettings::~KQexCurveSettings()
{
    sOfThread = mBefore;
}

int KFCURVE_GetRotationFilterToApply()
{
    return sOfThread != nullptr ? sOfThread->mRotationFilter : sRotationFilterToApply.load(std::memory_order_relaxed);
}

void KFCURVE_SetRotationFilterToApply(int pFilter)
{
    sRotationFilterToApply.store(pFilter, std::memory_order_relaxed);
}

bool KFCURVE_GetUseConstantKeyReducer()
{
    return sOfThread != nullptr ? sOfThread->mUseConstantKeyReducer : sUseConstantKeyReducer.load(std::memory_order_relaxed);
}

void KFCURVE_SetUseConstantKeyReducer(bool pUse)
{
    sUseConstantKeyReducer.store(pUse, std::memory_order_relaxed);
}

} // namespace qexsdk
