#ifndef KBASELIB_KBASE_KBASEEXPORT_H
#define KBASELIB_KBASE_KBASEEXPORT_H

/// \file
/// QEX_API marks what a shared library of the project shows to its users; everything else stays hidden.
/// A static build needs no marks: there it is empty, so that a program which links the library shows none of it either.

#if defined(QEX_SHARED) && defined(__GNUC__)
#define QEX_API __attribute__((visibility("default")))
#else
#define QEX_API
#endif

#endif
