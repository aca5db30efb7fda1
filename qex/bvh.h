#ifndef QEX_BVH_H
#define QEX_BVH_H

/// \file
/// BVH files. Includes all public headers of qex::bvh and of what it uses.

#include <qexioplugins/bvh/kqexfilebvh.h>

#include <qex/motion.h>

#endif
