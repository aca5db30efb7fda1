#include <qexioplugins/acclaim/asf/kqexasflock.h>

namespace qexsdk
{

std::mutex& AsfReaderLock() noexcept
{
    static std::mutex sMutex;
    return sMutex;
}

} // namespace qexsdk
