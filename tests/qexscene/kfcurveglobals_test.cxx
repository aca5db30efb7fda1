#include <qexscene/kfcurveglobals.h>

#include <gtest/gtest.h>

#include <climits>

namespace qexsdk
{
namespace
{

TEST(KFCurveGlobals, NothingIsAppliedByDefault)
{
    EXPECT_EQ(KFCURVE_GetRotationFilterToApply(), 0);
    EXPECT_FALSE(KFCURVE_GetUseConstantKeyReducer());
}

TEST(KFCurveGlobals, KeepTheValuesSet)
{
    for (const int lFilter : {1, 2, 3, -1, INT_MIN, INT_MAX, 0})
    {
        KFCURVE_SetRotationFilterToApply(lFilter);
        EXPECT_EQ(KFCURVE_GetRotationFilterToApply(), lFilter);
    }
    for (const bool lUse : {true, false})
    {
        KFCURVE_SetUseConstantKeyReducer(lUse);
        EXPECT_EQ(KFCURVE_GetUseConstantKeyReducer(), lUse);
    }
}

} // namespace
} // namespace qexsdk
