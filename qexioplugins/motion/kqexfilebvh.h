#ifndef QEXIOPLUGINS_MOTION_KQEXFILEBVH_H
#define QEXIOPLUGINS_MOTION_KQEXFILEBVH_H

/// \file
/// Where kqexfilebvh.h was. New code includes it from qexioplugins/bvh/ and links qex::bvh.

#include <qexioplugins/bvh/kqexfilebvh.h>

#endif
