#ifndef QEXIOPLUGINS_MOTION_KQEXMOTIONIO_H
#define QEXIOPLUGINS_MOTION_KQEXMOTIONIO_H

#include <qexscene/kqexbonedof.h>
#include <qexscene/kqexsampling.h>

/// \file
/// Types shared by all readers and writers of motion: degrees of freedom, sampling, progress.

#endif
