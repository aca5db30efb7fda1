#ifndef QEXFIGURE_CHECK_KQEXSIZEHINT_H
#define QEXFIGURE_CHECK_KQEXSIZEHINT_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>

namespace qexsdk
{

class KQexFigure;
class KQexFigureFile;
class KQexFigureSurvey;
class KQexSkeletonFile;

/// \name A figure of unusual size
/// A note for a figure of many joints that is far smaller or larger than people, with the unit that its file may be in and the factor
/// that corrects it; "" for any other. These functions may throw std::bad_alloc.
///@{

/// \param pExtent largest extent at rest, in centimetres
/// \param pJoints number of joints
/// \param pCentimetresPerUnit the unit that the file's lengths were read in
/// \param pScaleOption how a user of the program scales a figure ("asf convert --scale"); empty: the note is for nobody in particular
QEX_API std::string SizeHint(double pExtent, size_t pJoints, double pCentimetresPerUnit, const std::string& pScaleOption);

/// For a skeleton that was read.
QEX_API std::string SizeHint(const KQexSkeletonFile& pSkeleton, const std::string& pScaleOption);

/// For a figure that was surveyed; \p pFile is its file.
QEX_API std::string SizeHint(const KQexFigureFile& pFile, const KQexFigureSurvey& pSurvey, const std::string& pScaleOption);

/// For a figure that was loaded; \p pFile is its file, or the file of its skeleton.
QEX_API std::string SizeHint(const KQexFigureFile& pFile, KQexFigure& pFigure, const std::string& pScaleOption);
///@}

} // namespace qexsdk

#endif
