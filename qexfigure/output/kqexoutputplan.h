#ifndef QEXFIGURE_OUTPUT_KQEXOUTPUTPLAN_H
#define QEXFIGURE_OUTPUT_KQEXOUTPUTPLAN_H

#include <qexfigure/output/kqexframeoutput.h>

#include <memory>
#include <vector>

namespace qexsdk
{

using KQexOutputList = std::vector<std::unique_ptr<KQexFrameOutput>>;

/// The takes of a run, and the outputs that have them.
struct KQexOutputPlan
{
    std::vector<KQexSampledTake> mTakes;               ///< At least one. The outputs point to them.
    KQexOutputList               mOthers;              ///< All but mAcclaim, in the caller's order.
    KQexOutputList               mAcclaim;             ///< Skeletons with their motions, or motions alone.
    bool                         mHasSkeleton = false; ///< There is an ASF file among them.
};

/// Checks \p pOutputs and makes \p pPlan, which is empty, of them. False after an error. May throw std::bad_alloc.
bool KMakeOutputPlan(KQexFrameOutputs& pRun, const std::vector<KQexFigureOutput>& pOutputs, KQexOutputPlan& pPlan);

} // namespace qexsdk

#endif
