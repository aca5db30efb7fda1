#include <apps/asf/report/tablevalues.h>

#include <utility>

namespace asfapp
{

KJointValues::KJointValues(const std::vector<qexsdk::KQexFigureJoint>& pAll, std::vector<size_t> pPicked,
                           const qexsdk::KQexOutputSpace& pSpace)
    : mAll(pAll), mPicked(std::move(pPicked)), mSpace(pSpace)
{
}

void KJointValues::Begin(const qexsdk::KQexFrameNodes& pNodes, int pThreads)
{
    mFrames.assign(static_cast<size_t>(pThreads), qexsdk::KQexFigurePose(mAll, pNodes, mSpace, GetParts()));
}

void KJointValues::Compute(int pThread, const qexsdk::KQexFrame& pFrame, double* pValues) noexcept
{
    qexsdk::KQexFigurePose& lJoints = mFrames[static_cast<size_t>(pThread)];
    lJoints.Set(pFrame);
    for (const size_t lJoint : mPicked)
    {
        Put(lJoints, lJoint, pValues);
        pValues += GetSize();
    }
}

void KPositionValues::Put(const qexsdk::KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const
{
    pJoints.GetPosition(qexsdk::KQexSpace::eWORLD, pJoint, pNumbers);
}

KRotationValues::KRotationValues(const std::vector<qexsdk::KQexFigureJoint>& pAll, std::vector<size_t> pPicked,
                                 const qexsdk::KQexOutputSpace& pSpace, qexsdk::KQexSpace pRelativeTo, qexsdk::KQexRotationForm pForm,
                                 int pOrder)
    : KJointValues(pAll, std::move(pPicked), pSpace), mRelativeTo(pRelativeTo), mForm(pForm), mWriter(pForm, pOrder, GetJointCount())
{
}

void KRotationValues::Put(const qexsdk::KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const
{
    mWriter.Convert(pJoints.GetRotation(mRelativeTo, pJoint), pNumbers);
}

} // namespace asfapp
