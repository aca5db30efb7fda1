#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFBINARY_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFBINARY_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>

namespace qexsdk
{

/// The start of a binary glTF file: its header, the chunk of \p pJson and the header of the BIN chunk, which \p pBytes bytes follow.
/// Empty when the whole file would exceed 4 GB, the largest size that its header can hold.
QEX_API std::string MakeGltfBinaryStart(std::string pJson, std::size_t pBytes);

} // namespace qexsdk

#endif
