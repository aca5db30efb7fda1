#ifndef APPS_ASF_REPORT_SIZEHINT_H
#define APPS_ASF_REPORT_SIZEHINT_H

#include <apps/asf/console.h>
#include <qexfigure/kqexfigure.h>

#include <string>

namespace asfapp
{

class KFigureSurvey;
class KSkeletonFile;

/// A note for a figure of many joints that is far smaller or larger than people, with the unit that its file may be in and the factor
/// that corrects it; "" for any other.
/// \param pExtent largest extent at rest, in centimetres
/// \param pJoints number of joints
/// \param pCentimetresPerUnit the unit that the file's lengths were read in
std::string SizeHint(double pExtent, size_t pJoints, double pCentimetresPerUnit);

/// \name The note for a file that was read
/// Prints it as a note about \p pPath.
///@{
void PrintSizeHint(const qexsdk::KQexFigureFile& pFile, const KFigureSurvey& pSurvey, KConsole& pConsole);
void PrintSizeHint(const qexsdk::KQexFigureFile& pFile, const KSkeletonFile& pSkeleton, KConsole& pConsole);
void PrintSizeHint(const qexsdk::KQexFigureFile& pFile, qexsdk::KQexFigure& pFigure, KConsole& pConsole);
///@}

} // namespace asfapp

#endif
