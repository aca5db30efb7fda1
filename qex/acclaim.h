#ifndef QEX_ACCLAIM_H
#define QEX_ACCLAIM_H

/// \file
/// Acclaim skeletons and motion: ASF and AMC files. Includes all public headers of qex::acclaim and of what it uses.

#include <qexioplugins/acclaim/kqexasfnode.h>
#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/acclaim/kqexskeletonmatch.h>

#include <qex/motion.h>

#endif
