#ifndef QEX_KBASE_H
#define QEX_KBASE_H

/// \file
/// Memory, arrays, strings, numbers, times, files. Includes all public headers of qex::kbase.

#include <kbaselib/kbase/karray.h>
#include <kbaselib/kbase/kassert.h>
#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/kbytesource.h>
#include <kbaselib/kbase/klinereader.h>
#include <kbaselib/kbase/kmemory.h>
#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/koutputfile.h>
#include <kbaselib/kbase/kparallel.h>
#include <kbaselib/kbase/kstring.h>
#include <kbaselib/kbase/ktime.h>

#endif
