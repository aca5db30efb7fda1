#ifndef QEXFIGURE_KQEXFIGUREJOINT_H
#define QEXFIGURE_KQEXFIGUREJOINT_H

#include <qexfigure/kqexfigure.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// Index of the first joint of \p pJoints with this name. -1, with an error in \p pReport that has the nearest name, if there is none.
/// \p pOption: how a user of the program names it ("--joints: "); may be empty. May throw std::bad_alloc.
QEX_API int FindFigureJoint(const std::vector<KQexFigureJoint>& pJoints, const std::string& pName, const std::string& pOption,
                            KQexFigureReport& pReport);

} // namespace qexsdk

#endif
