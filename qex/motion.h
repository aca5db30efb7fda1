#ifndef QEX_MOTION_H
#define QEX_MOTION_H

/// \file
/// What all readers and writers of motion share. Includes all public headers of qex::motion and of what it uses.

#include <qexioplugins/motion/kqexmotionio.h>
#include <qexioplugins/motion/kqexsides.h>
#include <qexioplugins/motion/kqextextfile.h>
#include <qexioplugins/motion/kqextextmessage.h>

#include <qex/scene.h>

#endif
