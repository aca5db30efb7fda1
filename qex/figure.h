#ifndef QEX_FIGURE_H
#define QEX_FIGURE_H

/// \file
/// Any file as a scene; checks and pictures. Includes all public headers of qex::figure and of what it uses.

#include <qexfigure/check/kqexfigurecheck.h>
#include <qexfigure/check/kqexfiguresurvey.h>
#include <qexfigure/check/kqexfilemessages.h>
#include <qexfigure/check/kqexmotionsurvey.h>
#include <qexfigure/check/kqexsizehint.h>
#include <qexfigure/check/kqexskeletonfile.h>
#include <qexfigure/kqexdofcolumns.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurefile.h>
#include <qexfigure/kqexfigurefiles.h>
#include <qexfigure/kqexfigurepose.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexfigure/kqexfigureworld.h>
#include <qexfigure/kqexmotionarrays.h>
#include <qexfigure/kqexnpy.h>
#include <qexfigure/kqexnpzfile.h>
#include <qexfigure/output/kqexfigurewrite.h>
#include <qexfigure/picture/kqexangles.h>
#include <qexfigure/picture/kqexchart.h>
#include <qexfigure/picture/kqexfigurepicture.h>
#include <qexfigure/picture/kqexpicture.h>
#include <qexfigure/picture/kqexsvg.h>

#include <qex/acclaim.h>
#include <qex/bvh.h>
#include <qex/clip.h>

#endif
