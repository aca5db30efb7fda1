#include <kbaselib/kbase/kmemory.h>

#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace qexsdk
{
namespace
{

int sAlive = 0;

struct KCounted
{
    explicit KCounted(int pValue = 7) : mValue(pValue) { ++sAlive; }
    virtual ~KCounted() { --sAlive; }
    int mValue;
};

struct KDerived : KCounted
{
    ~KDerived() override { smDestroyed = true; }
    static bool smDestroyed;
    char        mMore[100] = {};
};
bool KDerived::smDestroyed = false;

struct KThrowing
{
    KThrowing() { throw std::runtime_error("no"); }
};

TEST(KMemoryTest, NewAllocatesWithTheLibrarysAllocator)
{
    KMemoryWatch lWatch;
    KCounted*    lObject = QexSdkNew<KCounted>();
    ASSERT_NE(lObject, nullptr);
    EXPECT_EQ(lObject->mValue, 7);
    EXPECT_EQ(sAlive, 1);
    EXPECT_EQ(lWatch.GetBlocks(), 1U);
    EXPECT_EQ(lWatch.GetBytes(), sizeof(KCounted));
    QexSdkDelete(lObject);
    EXPECT_EQ(sAlive, 0);
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
}

TEST(KMemoryTest, NewForwardsItsArguments)
{
    KCounted* lObject = QexSdkNew<KCounted>(3);
    ASSERT_NE(lObject, nullptr);
    EXPECT_EQ(lObject->mValue, 3);
    QexSdkDelete<KCounted>(lObject);
}

TEST(KMemoryTest, NewIsNullWithoutMemory)
{
    KMemoryWatch lWatch;
    lWatch.FailAfter(0);
    EXPECT_EQ(QexSdkNew<KCounted>(), nullptr);
    EXPECT_EQ(sAlive, 0);
}

TEST(KMemoryTest, AThrowingConstructorLeaksNothing)
{
    KMemoryWatch lWatch;
    EXPECT_THROW(QexSdkNew<KThrowing>(), std::runtime_error);
    EXPECT_EQ(lWatch.GetCalls(), 1);
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
}

TEST(KMemoryTest, DeleteRunsTheVirtualDestructor)
{
    KMemoryWatch lWatch;
    KCounted*    lObject = QexSdkNew<KDerived>();
    KDerived::smDestroyed = false;
    QexSdkDelete(lObject);
    EXPECT_TRUE(KDerived::smDestroyed);
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
}

TEST(KMemoryTest, ReleasingNullDoesNothing)
{
    QexSdkDelete<KCounted>(nullptr);
    QexSdkFree(nullptr);
    KBaseArrayFree(nullptr);
    EXPECT_EQ(sAlive, 0);
}

TEST(KMemoryTest, MallocAlignsForEveryFundamentalType)
{
    for (const size_t lSize : {1U, 3U, 17U, 1000U})
    {
        void* lMemory = QexSdkMalloc(lSize);
        ASSERT_NE(lMemory, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(lMemory) % alignof(std::max_align_t), 0U);
        QexSdkFree(lMemory);
    }
}

TEST(KMemoryTest, ReallocKeepsWhatFits)
{
    char* lBlock = KBaseArrayRealloc(nullptr, 6);
    ASSERT_NE(lBlock, nullptr);
    std::memcpy(lBlock, "hello", 6);
    lBlock = KBaseArrayRealloc(lBlock, 100000);
    ASSERT_NE(lBlock, nullptr);
    EXPECT_STREQ(lBlock, "hello");
    KBaseArrayFree(lBlock);
}

TEST(KMemoryTest, AFailedReallocKeepsTheBlock)
{
    char* lBlock = KBaseArrayRealloc(nullptr, 6);
    ASSERT_NE(lBlock, nullptr);
    std::memcpy(lBlock, "hello", 6);
    {
        KMemoryWatch lWatch;
        lWatch.FailAfter(0);
        EXPECT_EQ(KBaseArrayRealloc(lBlock, 12), nullptr);
    }
    EXPECT_STREQ(lBlock, "hello");
    KBaseArrayFree(lBlock);
}

TEST(KMemoryTest, AMissingHookMeansTheDefault)
{
    KMemoryHooks lHooks;
    lHooks.mMalloc = [](size_t, void*) -> void*
    {
        return nullptr;
    };
    const KMemoryHooks* lBefore = QexSdkSetMemoryHooks(&lHooks);
    void*               lNothing = QexSdkMalloc(8);
    char*               lBlock = KBaseArrayRealloc(nullptr, 8);
    KBaseArrayFree(lBlock);
    const KMemoryHooks* lReplaced = QexSdkSetMemoryHooks(lBefore);
    EXPECT_EQ(lNothing, nullptr);
    EXPECT_NE(lBlock, nullptr);
    EXPECT_EQ(lReplaced, &lHooks);
}

} // namespace
} // namespace qexsdk
