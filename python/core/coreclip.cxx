#include <python/core/corearrays.h>
#include <python/core/coremodule.h>
#include <python/core/coresource.h>
#include <qexclip/kqexclipquantities.h>
#include <qexfigure/kqexdidyoumean.h>

#include <pybind11/stl.h>

#include <utility>

namespace qexpython
{

namespace
{

using qexsdk::KQexClip;
using qexsdk::KQexClipData;
using qexsdk::KQexJointTransform;
using qexsdk::KQexRotationForm;
using qexsdk::KQexSpace;

/// Frames computed at once, so that an array in single precision has none in double precision of its size beside it: for 22,008 frames of
/// 38 joints a process needs 92 MB instead of 140.
constexpr long long kBlock = 256;

/// Frames, then \p pRest.
KShape FramesAnd(const KQexClip& pClip, std::initializer_list<size_t> pRest)
{
    KShape lShape{static_cast<Py_ssize_t>(pClip.GetFrameCount())};
    lShape.insert(lShape.end(), pRest.begin(), pRest.end());
    return lShape;
}

size_t JointsOf(const KQexClip& pClip)
{
    return pClip.GetData().mNames.size();
}

/// Adds a read-only view of a list of the clip's data, with the shape that \p pShape gives.
template <typename TNumber, typename TShape>
void AddView(py::class_<KQexClip, KClipPointer>& pClass, const char* pName, std::vector<TNumber> KQexClipData::*pList, const TShape& pShape)
{
    pClass.def_property_readonly(pName,
                                 [pList, pShape](const py::object& pSelf)
                                 {
                                     const KQexClip& lClip = *pSelf.cast<KQexClip*>();
                                     return MakeView((lClip.GetData().*pList).data(), pShape(lClip), pSelf);
                                 });
}

/// The numbers of each joint at rest that \p pNumbers points to.
template <size_t TCount>
py::array RestOf(const KQexClip& pClip, float (KQexJointTransform::*pNumbers)[TCount])
{
    py::array_t<float> lResult(KShape{static_cast<Py_ssize_t>(JointsOf(pClip)), static_cast<Py_ssize_t>(TCount)});
    float*             lOut = lResult.mutable_data();
    for (const KQexJointTransform& lRest : pClip.GetData().mRest)
    {
        lOut = std::copy(lRest.*pNumbers, lRest.*pNumbers + TCount, lOut);
    }
    return std::move(lResult);
}

/// Frames × joints × 3 numbers: those of the joints listed in \p pJoints from \p pValues, of the others those at rest.
py::array Expand(const KQexClip& pClip, const std::vector<int>& pJoints, const std::vector<float>& pValues,
                 float (KQexJointTransform::*pRest)[3])
{
    py::array_t<float> lResult(FramesAnd(pClip, {JointsOf(pClip), 3}));
    float*             lOut = lResult.mutable_data();
    const float*       lFrom = pValues.data();
    {
        const KWithoutLock lWithout;
        for (long long lFrame = 0; lFrame < pClip.GetFrameCount(); ++lFrame)
        {
            float* const lRow = lOut;
            for (const KQexJointTransform& lRest : pClip.GetData().mRest)
            {
                lOut = std::copy(lRest.*pRest, lRest.*pRest + 3, lOut);
            }
            for (const int lJoint : pJoints)
            {
                std::copy(lFrom, lFrom + 3, lRow + 3 * lJoint);
                lFrom += 3;
            }
        }
    }
    return std::move(lResult);
}

KQexRotationForm FormOf(const std::string& pWord)
{
    static const std::pair<const char*, KQexRotationForm> sForms[] = {{"quat", KQexRotationForm::eQUATERNION},
                                                                      {"matrix", KQexRotationForm::eMATRIX},
                                                                      {"6d", KQexRotationForm::eSIX},
                                                                      {"axis_angle", KQexRotationForm::eAXIS_ANGLE},
                                                                      {"euler", KQexRotationForm::eEULER}};
    for (const auto& [lWord, lForm] : sForms)
    {
        if (pWord == lWord)
        {
            return lForm;
        }
    }
    throw py::value_error("no form of rotations: " + pWord);
}

py::array Rotations(const KQexClip& pClip, bool pIsWorld, const std::string& pForm, const std::string& pOrder, bool pIsDouble)
{
    const KQexRotationForm lForm = FormOf(pForm);
    const KQexSpace        lSpace = pIsWorld ? KQexSpace::eWORLD : KQexSpace::eLOCAL;
    const int              lOrder = lForm == KQexRotationForm::eEULER ? qexsdk::KQexEulerOrderOf(pOrder) : 0;
    if (lOrder < 0)
    {
        throw py::value_error("no order of Euler angles: " + pOrder);
    }
    // A quaternion's sign and Euler angles follow on the frame before.
    const bool      lIsContinuous = lForm == KQexRotationForm::eQUATERNION || lForm == KQexRotationForm::eEULER;
    const long long lBlock = lIsContinuous ? std::max(1LL, pClip.GetFrameCount()) : kBlock;
    const KShape    lShape = lForm == KQexRotationForm::eMATRIX
                                 ? FramesAnd(pClip, {JointsOf(pClip), 3, 3})
                                 : FramesAnd(pClip, {JointsOf(pClip), static_cast<size_t>(qexsdk::KQexRotationSize(lForm))});
    return Compute(pIsDouble, lShape, lBlock,
                   [&](long long pFirst, long long pCount, double* pNumbers)
                   { return qexsdk::KQexGetRotations(pClip, lSpace, lForm, lOrder, pFirst, pCount, pNumbers); });
}

using KVectorFunction = bool (*)(const KQexClip&, long long, long long, double*);

/// Three numbers of each joint in each frame, as \p pFunction computes them.
py::array Vectors(const KQexClip& pClip, KVectorFunction pFunction, bool pIsDouble)
{
    return Compute(pIsDouble, FramesAnd(pClip, {JointsOf(pClip), 3}), kBlock,
                   [&](long long pFirst, long long pCount, double* pNumbers) { return pFunction(pClip, pFirst, pCount, pNumbers); });
}

/// The degrees of freedom: index of the joint and word of each.
std::vector<std::pair<int, py::str>> Dofs(const KQexClip& pClip)
{
    std::vector<std::pair<int, py::str>> lDofs;
    for (const qexsdk::KQexClipDof& lDof : pClip.GetData().mDofs)
    {
        lDofs.emplace_back(lDof.mJoint, TextOf(lDof.mDof.mWord));
    }
    return lDofs;
}

/// Lower and upper limit of each degree of freedom; infinite where there is none.
py::array DofLimits(const KQexClip& pClip)
{
    py::array_t<double> lResult(KShape{static_cast<Py_ssize_t>(pClip.GetData().mDofs.size()), 2});
    double*             lOut = lResult.mutable_data();
    for (const qexsdk::KQexClipDof& lDof : pClip.GetData().mDofs)
    {
        *lOut++ = lDof.mDof.GetMin();
        *lOut++ = lDof.mDof.GetMax();
    }
    return std::move(lResult);
}

/// Frame, degree of freedom and excess of each value that passes a limit: three lists.
py::tuple LimitViolations(const KQexClip& pClip)
{
    std::vector<long long> lFrames;
    std::vector<int>       lDofs;
    std::vector<double>    lExcess;
    const KQexClipData&    lData = pClip.GetData();
    {
        const KWithoutLock lWithout;
        std::vector<int>   lPassed;
        for (long long lFrame = 0; lFrame < pClip.GetFrameCount() && !lData.mDofValues.empty(); ++lFrame)
        {
            if (!qexsdk::KQexPassedLimits(lData, lFrame, lPassed))
            {
                throw std::bad_alloc();
            }
            for (const int lDof : lPassed)
            {
                const size_t lIndex = static_cast<size_t>(lFrame) * lData.mDofs.size() + static_cast<size_t>(lDof);
                lFrames.push_back(lFrame);
                lDofs.push_back(lDof);
                lExcess.push_back(lData.mDofs[static_cast<size_t>(lDof)].mDof.GetExcess(static_cast<double>(lData.mDofValues[lIndex])));
            }
        }
    }
    return py::make_tuple(py::array_t<long long>(static_cast<Py_ssize_t>(lFrames.size()), lFrames.data()),
                          py::array_t<int>(static_cast<Py_ssize_t>(lDofs.size()), lDofs.data()),
                          py::array_t<double>(static_cast<Py_ssize_t>(lExcess.size()), lExcess.data()));
}

void AddStoredArrays(py::class_<KQexClip, KClipPointer>& pClass)
{
    const auto lJoints = [](const KQexClip& pClip)
    {
        return KShape{static_cast<Py_ssize_t>(JointsOf(pClip))};
    };
    const auto lMoving = [](const KQexClip& pClip)
    {
        return KShape{static_cast<Py_ssize_t>(pClip.GetData().mMovingJoints.size())};
    };
    const auto lScaled = [](const KQexClip& pClip)
    {
        return KShape{static_cast<Py_ssize_t>(pClip.GetData().mScaledJoints.size())};
    };
    AddView(pClass, "parents", &KQexClipData::mParents, lJoints);
    AddView(pClass, "quaternions", &KQexClipData::mRotations, [](const KQexClip& pClip) { return FramesAnd(pClip, {JointsOf(pClip), 4}); });
    AddView(pClass, "moving_joints", &KQexClipData::mMovingJoints, lMoving);
    AddView(pClass, "moving_translations", &KQexClipData::mTranslations,
            [](const KQexClip& pClip) {
                return FramesAnd(pClip, {pClip.GetData().mMovingJoints.size(), 3});
            });
    AddView(pClass, "scaled_joints", &KQexClipData::mScaledJoints, lScaled);
    AddView(pClass, "moving_scalings", &KQexClipData::mScalings,
            [](const KQexClip& pClip) {
                return FramesAnd(pClip, {pClip.GetData().mScaledJoints.size(), 3});
            });
    AddView(pClass, "dof_values", &KQexClipData::mDofValues,
            [](const KQexClip& pClip) {
                return pClip.GetData().mDofValues.empty() ? KShape{0, 0} : FramesAnd(pClip, {pClip.GetData().mDofs.size()});
            });
    pClass.def_property_readonly("is_end",
                                 [](const KQexClip& pClip)
                                 {
                                     std::vector<char> lEnds = pClip.GetData().mIsEnd;
                                     lEnds.resize(JointsOf(pClip), 0);
                                     py::array_t<bool> lResult(static_cast<Py_ssize_t>(lEnds.size()));
                                     std::transform(lEnds.begin(), lEnds.end(), lResult.mutable_data(), [](char pIs) { return pIs != 0; });
                                     return lResult;
                                 });
    pClass.def_property_readonly("rest_translations",
                                 [](const KQexClip& pClip) { return RestOf(pClip, &KQexJointTransform::mTranslation); });
    pClass.def_property_readonly("rest_quaternions", [](const KQexClip& pClip) { return RestOf(pClip, &KQexJointTransform::mRotation); });
    pClass.def_property_readonly("rest_scalings", [](const KQexClip& pClip) { return RestOf(pClip, &KQexJointTransform::mScaling); });
}

} // namespace

void AddClip(py::module_& pModule)
{
    py::class_<KQexClip, KClipPointer> lClass(pModule, "Clip");
    lClass.def_property_readonly("names",
                                 [](const KQexClip& pClip)
                                 {
                                     py::list lNames;
                                     for (const std::string& lName : pClip.GetData().mNames)
                                     {
                                         lNames.append(TextOf(lName));
                                     }
                                     return lNames;
                                 });
    lClass.def_property_readonly("frame_count", &KQexClip::GetFrameCount);
    lClass.def_property_readonly("fps", &KQexClip::GetRate);
    lClass.def_property_readonly("step", [](const KQexClip& pClip) { return pClip.GetData().mSampling.mStep.GetSeconds(); });
    lClass.def_property_readonly("dofs", &Dofs);
    lClass.def_property_readonly("dof_limits", &DofLimits);
    AddStoredArrays(lClass);
    lClass.def("translations", [](const KQexClip& pClip)
               { return Expand(pClip, pClip.GetData().mMovingJoints, pClip.GetData().mTranslations, &KQexJointTransform::mTranslation); });
    lClass.def("scalings", [](const KQexClip& pClip)
               { return Expand(pClip, pClip.GetData().mScaledJoints, pClip.GetData().mScalings, &KQexJointTransform::mScaling); });
    lClass.def("rotations", &Rotations);
    lClass.def("positions", [](const KQexClip& pClip, bool pIsDouble) { return Vectors(pClip, qexsdk::KQexGetPositions, pIsDouble); });
    lClass.def("velocities", [](const KQexClip& pClip, bool pIsDouble) { return Vectors(pClip, qexsdk::KQexGetVelocities, pIsDouble); });
    lClass.def("angular_velocities",
               [](const KQexClip& pClip, bool pIsDouble) { return Vectors(pClip, qexsdk::KQexGetAngularVelocities, pIsDouble); });
    lClass.def("limit_violations", &LimitViolations);
    pModule.def("did_you_mean",
                [](const std::string& pName, const KQexClip& pClip) { return TextOf(qexsdk::DidYouMean(pName, pClip.GetData().mNames)); });
}

} // namespace qexpython
