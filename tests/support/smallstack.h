#ifndef TESTS_SUPPORT_SMALLSTACK_H
#define TESTS_SUPPORT_SMALLSTACK_H

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <pthread.h>

/// \file
/// Running code in a thread with a stack of a given size, which recursion over a deep tree would overflow.

namespace qextest
{

/// Stack sizes that must suffice for deep trees: a main thread's, and a small worker's.
constexpr std::size_t kStackSizes[] = {std::size_t(8) << 20, std::size_t(256) << 10};

/// Runs \p pBody to completion in a separate thread with a stack of \p pBytes bytes.
inline void RunWithStackSize(std::size_t pBytes, std::function<void()> pBody)
{
    pthread_attr_t lAttributes;
    pthread_attr_init(&lAttributes);
    ASSERT_EQ(pthread_attr_setstacksize(&lAttributes, pBytes), 0);
    pthread_t  lThread;
    const auto lRun = [](void* pArgument) -> void*
    {
        (*static_cast<std::function<void()>*>(pArgument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&lThread, &lAttributes, lRun, &pBody), 0);
    pthread_join(lThread, nullptr);
    pthread_attr_destroy(&lAttributes);
}

} // namespace qextest

#endif
