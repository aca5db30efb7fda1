#ifndef QEX_FIGURE_H
#define QEX_FIGURE_H

/// \file
/// Any file as a scene. Includes all public headers of qex::figure and of what it uses.

#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurefile.h>
#include <qexfigure/kqexfigurefiles.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexfigure/kqexfigureworld.h>

#include <qex/acclaim.h>
#include <qex/bvh.h>
#include <qex/clip.h>

#endif
