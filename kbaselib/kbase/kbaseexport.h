#ifndef KBASELIB_KBASE_KBASEEXPORT_H
#define KBASELIB_KBASE_KBASEEXPORT_H

/// \file
/// QEX_API marks what a shared library of the project exports; everything else stays hidden. It is empty in a static build, so that a
/// program that links the library exports none of it either.

#if defined(QEX_SHARED) && defined(__GNUC__)
#define QEX_API __attribute__((visibility("default")))
#else
#define QEX_API
#endif

#endif
