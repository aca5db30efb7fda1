#include <qexioplugins/gltf/kqexgltfnames.h>

#include <kbaselib/kbase/kutf8.h>

namespace qexsdk
{

bool IsUtf8(std::string_view pText)
{
    return KIsUtf8(pText);
}

} // namespace qexsdk
