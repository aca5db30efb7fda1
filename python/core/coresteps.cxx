#include <python/core/corearrays.h>
#include <python/core/coremodule.h>
#include <qexclip/kqexclipsteps.h>
#include <qexscene/kqexsampling.h>

#include <pybind11/stl.h>

#include <cmath>
#include <new>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace qexpython
{

namespace
{

using qexsdk::KQexClip;
using qexsdk::KQexClipData;

/// A clip that \p pStep makes, without Python's lock. Python's code has checked the arguments: MemoryError if it cannot be made.
template <typename TStep>
KClipPointer Make(const TStep& pStep)
{
    auto lResult = std::make_shared<KQexClip>();
    bool lOk = false;
    {
        const KWithoutLock lWithout;
        lOk = pStep(*lResult);
    }
    return lOk ? lResult : throw std::bad_alloc();
}

using KStep = bool (*)(const KQexClip&, KQexClip&);

/// Adds a step without arguments.
template <KStep TStep>
void AddStep(py::module_& pModule, const char* pName)
{
    pModule.def(pName, [](const KQexClip& pClip) { return Make([&](KQexClip& pResult) { return TStep(pClip, pResult); }); });
}

using KFloats = py::array_t<float, py::array::c_style | py::array::forcecast>;

std::vector<float> ToVector(const KFloats& pNumbers)
{
    return std::vector<float>(pNumbers.data(), pNumbers.data() + pNumbers.size());
}

/// Three or four numbers of each joint at rest, into \p pNumbers; left at their defaults where there are none.
template <size_t TCount>
void SetRest(const std::vector<float>& pFrom, float (qexsdk::KQexJointTransform::*pNumbers)[TCount], KQexClipData& pData)
{
    if (!pFrom.empty() && pFrom.size() != pData.mRest.size() * TCount)
    {
        throw py::value_error("there are " + std::to_string(pFrom.size()) + " numbers at rest of " + std::to_string(pData.mRest.size()) +
                              " joints");
    }
    for (size_t i = 0; i < pFrom.size(); ++i)
    {
        (pData.mRest[i / TCount].*pNumbers)[i % TCount] = pFrom[i];
    }
}

/// The arrays that make up a clip, as the package's Python code checked their shapes.
struct KArrays
{
    std::vector<std::string>                                  mNames;
    std::vector<int>                                          mParents;
    std::vector<bool>                                         mIsEnd;
    KFloats                                                   mRestTranslations;
    KFloats                                                   mRestQuaternions;
    KFloats                                                   mRestScalings;
    KFloats                                                   mQuaternions;
    std::vector<int>                                          mMovingJoints;
    KFloats                                                   mTranslations;
    std::vector<int>                                          mScaledJoints;
    KFloats                                                   mScalings;
    std::vector<std::tuple<int, std::string, double, double>> mDofs; ///< Joint, word, limits.
    KFloats                                                   mDofValues;
};

KQexClipData DataOf(KArrays& pArrays)
{
    KQexClipData lData;
    lData.mNames = std::move(pArrays.mNames);
    lData.mParents = std::move(pArrays.mParents);
    lData.mIsEnd.assign(pArrays.mIsEnd.begin(), pArrays.mIsEnd.end());
    lData.mRest.resize(lData.mNames.size());
    SetRest(ToVector(pArrays.mRestTranslations), &qexsdk::KQexJointTransform::mTranslation, lData);
    SetRest(ToVector(pArrays.mRestQuaternions), &qexsdk::KQexJointTransform::mRotation, lData);
    SetRest(ToVector(pArrays.mRestScalings), &qexsdk::KQexJointTransform::mScaling, lData);
    lData.mRotations = ToVector(pArrays.mQuaternions);
    lData.mMovingJoints = std::move(pArrays.mMovingJoints);
    lData.mTranslations = ToVector(pArrays.mTranslations);
    lData.mScaledJoints = std::move(pArrays.mScaledJoints);
    lData.mScalings = ToVector(pArrays.mScalings);
    for (const auto& [lJoint, lWord, lMin, lMax] : pArrays.mDofs)
    {
        lData.mDofs.push_back({lJoint, {lWord, std::isfinite(lMin), std::isfinite(lMax), lMin, lMax}});
    }
    lData.mDofValues = ToVector(pArrays.mDofValues);
    return lData;
}

/// A clip of arrays, \p pSeconds a frame. ValueError with the first reasons why there is none.
KClipPointer FromArrays(KArrays pArrays, double pSeconds, long long pFrames)
{
    auto                     lResult = std::make_shared<KQexClip>();
    std::vector<std::string> lErrors;
    bool                     lOk = false;
    {
        const KWithoutLock lWithout;
        KQexClipData       lData = DataOf(pArrays);
        lData.mSampling = {qexsdk::KTime(0), qexsdk::NearestFrameStep(pSeconds), pFrames};
        lOk = KQexClip::FromArrays(std::move(lData), *lResult, &lErrors);
    }
    std::string lText;
    for (size_t i = 0; i < lErrors.size() && i < 3; ++i)
    {
        lText += (lText.empty() ? "" : "; ") + lErrors[i];
    }
    lText += lErrors.size() > 3 ? "; and more like these" : "";
    return lOk ? lResult : throw py::value_error(lText);
}

} // namespace

void AddSteps(py::module_& pModule)
{
    AddStep<qexsdk::KQexClipReverse>(pModule, "reverse");
    AddStep<qexsdk::KQexClipMakeZUp>(pModule, "make_z_up");
    AddStep<qexsdk::KQexClipMakeYUp>(pModule, "make_y_up");
    AddStep<qexsdk::KQexClipToOrigin>(pModule, "start_at_origin");
    pModule.def("resample", [](const KQexClip& pClip, double pRate)
                { return Make([&](KQexClip& pResult) { return qexsdk::KQexClipResample(pClip, pRate, pResult); }); });
    pModule.def("cut", [](const KQexClip& pClip, long long pFirst, long long pLast, int pEvery)
                { return Make([&](KQexClip& pResult) { return qexsdk::KQexClipCut(pClip, pFirst, pLast, pEvery, pResult); }); });
    pModule.def("select", [](const KQexClip& pClip, const std::vector<int>& pJoints)
                { return Make([&](KQexClip& pResult) { return qexsdk::KQexClipSelect(pClip, pJoints, pResult); }); });
    pModule.def("scale", [](const KQexClip& pClip, double pFactor)
                { return Make([&](KQexClip& pResult) { return qexsdk::KQexClipScale(pClip, pFactor, pResult); }); });
    pModule.def("mirror_pairs", [](const KQexClip& pClip) { return qexsdk::KQexMirrorPairs(pClip.GetData()); });
    pModule.def("mirror", [](const KQexClip& pClip, const std::vector<int>& pPairs)
                { return Make([&](KQexClip& pResult) { return qexsdk::KQexClipMirror(pClip, pPairs, pResult); }); });
    pModule.def("in_place", [](const KQexClip& pClip, bool pKeepTurn)
                { return Make([&](KQexClip& pResult) { return qexsdk::KQexClipInPlace(pClip, pKeepTurn, pResult); }); });
    pModule.def("join", [](const KQexClip& pClip, const KQexClip& pNext, int pBlend)
                { return Make([&](KQexClip& pResult) { return qexsdk::KQexClipJoin(pClip, pNext, pBlend, pResult); }); });
    py::class_<KArrays>(pModule, "Arrays")
        .def(py::init<>())
        .def_readwrite("names", &KArrays::mNames)
        .def_readwrite("parents", &KArrays::mParents)
        .def_readwrite("is_end", &KArrays::mIsEnd)
        .def_readwrite("rest_translations", &KArrays::mRestTranslations)
        .def_readwrite("rest_quaternions", &KArrays::mRestQuaternions)
        .def_readwrite("rest_scalings", &KArrays::mRestScalings)
        .def_readwrite("quaternions", &KArrays::mQuaternions)
        .def_readwrite("moving_joints", &KArrays::mMovingJoints)
        .def_readwrite("translations", &KArrays::mTranslations)
        .def_readwrite("scaled_joints", &KArrays::mScaledJoints)
        .def_readwrite("scalings", &KArrays::mScalings)
        .def_readwrite("dofs", &KArrays::mDofs)
        .def_readwrite("dof_values", &KArrays::mDofValues);
    pModule.def("from_arrays", &FromArrays);
}

} // namespace qexpython
