#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFNAMES_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFNAMES_H

#include <string_view>

namespace qexsdk
{

/// Whether \p pText is well-formed UTF-8: what is not cannot stand in JSON.
bool IsUtf8(std::string_view pText);

} // namespace qexsdk

#endif
