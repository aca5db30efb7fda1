#include <qexfigure/table/kqextablevalues.h>

#include <utility>

namespace qexsdk
{

KQexJointValues::KQexJointValues(const std::vector<KQexFigureJoint>& pAll, std::vector<size_t> pPicked, const KQexOutputSpace& pSpace)
    : mAll(pAll), mPicked(std::move(pPicked)), mSpace(pSpace)
{
}

void KQexJointValues::Begin(const KQexFrameNodes& pNodes, int pThreads)
{
    mFrames.assign(static_cast<size_t>(pThreads), KQexFigurePose(mAll, pNodes, mSpace, GetParts()));
}

void KQexJointValues::Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept
{
    KQexFigurePose& lJoints = mFrames[static_cast<size_t>(pThread)];
    lJoints.Set(pFrame);
    for (const size_t lJoint : mPicked)
    {
        Put(lJoints, lJoint, pValues);
        pValues += GetSize();
    }
}

void KQexPositionValues::Put(const KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const
{
    pJoints.GetPosition(KQexSpace::eWORLD, pJoint, pNumbers);
}

KQexRotationValues::KQexRotationValues(const std::vector<KQexFigureJoint>& pAll, std::vector<size_t> pPicked, const KQexOutputSpace& pSpace,
                                       KQexSpace pRelativeTo, KQexRotationForm pForm, int pOrder)
    : KQexJointValues(pAll, std::move(pPicked), pSpace), mRelativeTo(pRelativeTo), mForm(pForm), mWriter(pForm, pOrder, GetJointCount())
{
}

void KQexRotationValues::Put(const KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const
{
    mWriter.Convert(pJoints.GetRotation(mRelativeTo, pJoint), pNumbers);
}

} // namespace qexsdk
