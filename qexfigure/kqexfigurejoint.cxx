#include <qexfigure/kqexfigurejoint.h>

#include <qexfigure/kqexdidyoumean.h>

#include <algorithm>
#include <iterator>

namespace qexsdk
{

int FindFigureJoint(const std::vector<KQexFigureJoint>& pJoints, const std::string& pName, const std::string& pOption,
                    KQexFigureReport& pReport)
{
    const auto lFound =
        std::find_if(pJoints.begin(), pJoints.end(), [&pName](const KQexFigureJoint& pJoint) { return pJoint.mName == pName; });
    if (lFound != pJoints.end())
    {
        return static_cast<int>(lFound - pJoints.begin());
    }
    std::vector<std::string> lNames;
    std::transform(pJoints.begin(), pJoints.end(), std::back_inserter(lNames), [](const KQexFigureJoint& pJoint) { return pJoint.mName; });
    pReport.Fail(eFIGURE_USAGE, "", pOption + "the figure has no joint " + pName + DidYouMean(pName, lNames));
    return -1;
}

} // namespace qexsdk
