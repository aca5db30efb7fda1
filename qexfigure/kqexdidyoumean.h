#ifndef QEXFIGURE_KQEXDIDYOUMEAN_H
#define QEXFIGURE_KQEXDIDYOUMEAN_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// ", did you mean check?", with the word of \p pWords that \p pWord is probably a misspelling of; "" if none is close. May throw
/// std::bad_alloc.
QEX_API std::string DidYouMean(const std::string& pWord, const std::vector<std::string>& pWords);

} // namespace qexsdk

#endif
