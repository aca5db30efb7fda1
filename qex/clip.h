#ifndef QEX_CLIP_H
#define QEX_CLIP_H

/// \file
/// A motion as arrays. Includes all public headers of qex::clip and of what it uses.

#include <qex/scene.h>
#include <qexclip/kqexclip.h>
#include <qexclip/kqexclipdata.h>
#include <qexclip/kqexclipquantities.h>
#include <qexclip/kqexclipsteps.h>
#include <qexclip/kqexrotationform.h>

#endif
