#include <qexscene/kqexanimcurvekey.h>

#include <kbaselib/kbase/kassert.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qexsdk
{
namespace
{

std::vector<std::string> sReports;

void Report(const char* pFile, const char*, unsigned long, const char* pText, bool*)
{
    sReports.push_back(std::string(pFile) + ": " + pText);
}

KQexAnimCurveKeyData sElsewhere;

KQexAnimCurveKeyData* AllocateElsewhere(KQexAnimCurveKeyData*)
{
    return &sElsewhere;
}

KQexAnimCurveKeyData* AllocateNothing(KQexAnimCurveKeyData*)
{
    return nullptr;
}

TEST(KQexAnimCurveKey, StartsAtTimeZeroWithValueZero)
{
    const KQexAnimCurveKey lKey;
    EXPECT_EQ(lKey.GetTime().Get(), 0);
    EXPECT_EQ(lKey.GetValue(), 0.0F);
    EXPECT_EQ(KQexAnimCurveKeyBase().GetTime().Get(), 0);
}

TEST(KQexAnimCurveKey, SetSetsTimeAndValueSetTimeOnlyTheTime)
{
    KQexAnimCurveKey lKey;
    lKey.Set(KTime(77), 1.5F);
    EXPECT_EQ(lKey.GetTime().Get(), 77);
    EXPECT_EQ(lKey.GetValue(), 1.5F);
    KQexAnimCurveKeyBase& lBase = lKey;
    lBase.SetTime(KTime(KTime::kMin));
    EXPECT_EQ(lKey.GetTime().Get(), KTime::kMin);
    EXPECT_EQ(lKey.GetValue(), 1.5F);
    lKey.SetValue(-2.0F);
    EXPECT_EQ(lKey.GetTime().Get(), KTime::kMin);
    EXPECT_EQ(lKey.GetValue(), -2.0F);
}

TEST(KQexAnimCurveKey, CopiesAreIndependent)
{
    KQexAnimCurveKey lKey(KTime(5), 5.0F);
    KQexAnimCurveKey lCopy(lKey);
    KQexAnimCurveKey lAssigned;
    lAssigned = lKey;
    lKey.Set(KTime(6), 6.0F);
    for (const KQexAnimCurveKey* lOther : {&lCopy, &lAssigned})
    {
        EXPECT_EQ(lOther->GetTime().Get(), 5);
        EXPECT_EQ(lOther->GetValue(), 5.0F);
    }
}

TEST(KQexAnimCurveKey, DataAreStoredWhereTheAllocatorSays)
{
    const KQexAnimCurveKeyAllocatorFct lBefore = KQexAnimCurveKey::SetAllocatorFct(&AllocateElsewhere);
    EXPECT_EQ(lBefore, KQexAnimCurveKey::GetDefaultAllocatorFct());
    {
        KQexAnimCurveKey lKey;
        lKey.Set(KTime(1), 8.0F);
        EXPECT_EQ(sElsewhere.mValue, 8.0F);
    }
    KQexAnimCurveKey::SetAllocatorFct(&AllocateNothing);
    {
        const KQexAnimCurveKey lKey(KTime(1), 9.0F);
        EXPECT_EQ(lKey.GetValue(), 9.0F);
        EXPECT_EQ(sElsewhere.mValue, 8.0F);
    }
    EXPECT_EQ(KQexAnimCurveKey::SetAllocatorFct(lBefore), &AllocateNothing);
    EXPECT_EQ(KQexAnimCurveKey::GetAllocatorFct(), lBefore);
}

TEST(KQexAnimCurveKey, WithoutAllocatorConstructionReportsOnceAndTheKeyWorks)
{
    sReports.clear();
    const KAssertHandler               lHandler = KAssertSetHandler(&Report);
    const KQexAnimCurveKeyAllocatorFct lAllocator = KQexAnimCurveKey::SetAllocatorFct(nullptr);
    KQexAnimCurveKey                   lKey;
    lKey.Set(KTime(3), 4.0F);
    const KQexAnimCurveKey lCopy(lKey);
    KQexAnimCurveKey::SetAllocatorFct(lAllocator);
    KAssertSetHandler(lHandler);
    EXPECT_EQ(sReports, std::vector<std::string>{"qexscene/kqexanimcurvekey: mAllocatorFct != NULL"});
    EXPECT_EQ(lCopy.GetTime().Get(), 3);
    EXPECT_EQ(lCopy.GetValue(), 4.0F);
    sReports.clear();
    const KQexAnimCurveKey lLater;
    EXPECT_TRUE(sReports.empty());
}

} // namespace
} // namespace qexsdk
