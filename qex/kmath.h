#ifndef QEX_KMATH_H
#define QEX_KMATH_H

/// \file
/// Vectors, matrices, Euler angles. Includes all public headers of qex::kmath and of what it uses.

#include <kbaselib/kmath/kdofcodes.h>
#include <kbaselib/kmath/keulernearest.h>
#include <kbaselib/kmath/keulerorder.h>
#include <kbaselib/kmath/keulertable.h>
#include <kbaselib/kmath/kgeom.h>
#include <kbaselib/kmath/kmath.h>
#include <kbaselib/kmath/maths.h>

#include <qex/kbase.h>

#endif
