#ifndef APPS_ASF_FIGURE_POINT_H
#define APPS_ASF_FIGURE_POINT_H

#include <qexfigure/kqexfigure.h>

namespace asfapp
{

/// A point or a vector in centimetres: x to the figure's left, y up, z forward.
using KPoint = qexsdk::KQexFigurePoint;

} // namespace asfapp

#endif
