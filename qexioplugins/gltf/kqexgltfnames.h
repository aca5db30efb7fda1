#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFNAMES_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFNAMES_H

#include <string_view>

namespace qexsdk
{

/// Whether \p pText is well-formed UTF-8, as JSON requires.
bool IsUtf8(std::string_view pText);

} // namespace qexsdk

#endif
