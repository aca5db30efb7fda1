#ifndef QEXIOPLUGINS_MOTION_KQEXFILEBVH_H
#define QEXIOPLUGINS_MOTION_KQEXFILEBVH_H

/// \file
/// Former path of qexioplugins/bvh/kqexfilebvh.h. New code includes that one and links qex::bvh.

#include <qexioplugins/bvh/kqexfilebvh.h>

#endif
