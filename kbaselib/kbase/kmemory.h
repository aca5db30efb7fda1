#ifndef KBASELIB_KBASE_KMEMORY_H
#define KBASELIB_KBASE_KMEMORY_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <new>
#include <utility>

/// \file
/// The library's allocator. Skeletons, bones and child arrays use it exclusively, so that a program (or a test) can watch every
/// allocation of the model, or make one fail.

namespace qexsdk
{

/// The allocator's four operations, replaceable as one set. Each gets \c mContext as its last argument. Memory is freed by the set
/// installed at that time, so replace it while nothing is allocated, or forward to the default operations.
struct KMemoryHooks
{
    void* (*mMalloc)(size_t pSize, void* pContext) = nullptr;                ///< As QexSdkMalloc.
    void (*mFree)(void* pMemory, void* pContext) = nullptr;                  ///< As QexSdkFree; \p pMemory may be null.
    char* (*mRealloc)(char* pBlock, size_t pSize, void* pContext) = nullptr; ///< As KBaseArrayRealloc.
    void (*mArrayFree)(char* pBlock, void* pContext) = nullptr;              ///< As KBaseArrayFree; \p pBlock may be null.
    void* mContext = nullptr;                                                ///< Passed to each of them.
};

/// Installs \p pHooks, which must stay valid while installed; null, or a null member, means the default operation (the C library's).
/// Returns the previous set. Atomic; concurrent allocations use one set or the other.
QEX_API const KMemoryHooks* QexSdkSetMemoryHooks(const KMemoryHooks* pHooks);

/// Memory for \p pSize bytes, aligned for any fundamental type; null when memory runs out.
QEX_API void* QexSdkMalloc(size_t pSize);

/// Frees memory of QexSdkMalloc. Null does nothing.
QEX_API void QexSdkFree(void* pMemory);

/// Resizes \p pBlock (null: a new one) to \p pSize bytes, keeping what fits; it may move. Null when memory runs out: \p pBlock is then
/// untouched and still the caller's.
QEX_API char* KBaseArrayRealloc(char* pBlock, size_t pSize);

/// Frees a block of KBaseArrayRealloc. Null does nothing.
QEX_API void KBaseArrayFree(char* pBlock);

/// A new \p T in the library's memory, constructed from \p pArguments; release it with QexSdkDelete. Null when memory runs out. If the
/// constructor throws, the memory is freed and the exception passed on; no constructor of the library throws.
template <typename T, typename... TArguments>
T* QexSdkNew(TArguments&&... pArguments)
{
    static_assert(alignof(T) <= alignof(std::max_align_t), "QexSdkMalloc aligns for fundamental types only");
    /// Frees the memory when the constructor throws.
    struct KGuard
    {
        void* mMemory;
        ~KGuard() { QexSdkFree(mMemory); }
    };
    KGuard lGuard{QexSdkMalloc(sizeof(T))};
    if (lGuard.mMemory == nullptr)
    {
        return nullptr;
    }
    T* lObject = ::new (lGuard.mMemory) T(std::forward<TArguments>(pArguments)...);
    lGuard.mMemory = nullptr;
    return lObject;
}

/// Destroys an object of QexSdkNew (through its virtual destructor if it has one) and frees its memory. Null does nothing.
template <typename T>
void QexSdkDelete(T* pObject)
{
    if (pObject != nullptr)
    {
        pObject->~T();
        QexSdkFree(pObject);
    }
}

} // namespace qexsdk

#endif
