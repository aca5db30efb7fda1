#ifndef QEX_BVH_H
#define QEX_BVH_H

/// \file
/// BVH files. Includes all public headers of qex::bvh and of what it uses.

#include <qex/motion.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

#endif
