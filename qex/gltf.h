#ifndef QEX_GLTF_H
#define QEX_GLTF_H

/// \file
/// glTF files. Includes all public headers of qex::gltf and of what it uses.

#include <qexioplugins/gltf/kqexfilegltf.h>

#include <qex/motion.h>

#endif
