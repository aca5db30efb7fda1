#include <python/core/corelock.h>
#include <python/core/coremodule.h>
#include <python/core/coresource.h>
#include <qexclip/kqexclipsteps.h>
#include <qexclip/kqexrotationform.h>
#include <qexfigure/output/kqexfigurewrite.h>
#include <qexfigure/picture/kqexfigurepicture.h>

#include <pybind11/stl.h>

#include <utility>
#include <vector>

namespace qexpython
{

namespace
{

namespace py = pybind11;

using qexsdk::KQexClip;
using qexsdk::KQexFigure;
using qexsdk::KQexFigureReport;

/// What a clip's figure and files are like; texts are bytes.
struct KTarget
{
    std::vector<std::string> mPaths;
    std::string              mName;                   ///< Of the take.
    double                   mUnit = 1;               ///< Centimetres for each of the clip's numbers.
    bool                     mIsZUp = false;          ///< The clip has z up, and so have files that can.
    std::string              mSkeleton;               ///< ASF file of an AMC file alone.
    std::string              mOrder = "XYZ";          ///< Of BVH channels, in the order of application.
    bool                     mMesh = true;            ///< Of glTF.
    bool                     mIsForImitation = false; ///< Arrays of NPZ.
    bool                     mWriteRate = false;      ///< Of AMC.
};

/// A figure in centimetres, y up.
bool MakeFigure(const KQexClip& pClip, const KTarget& pTarget, KQexFigure& pFigure, KQexFigureReport& pReport)
{
    KQexClip        lTurned;
    KQexClip        lScaled;
    const KQexClip* lClip = &pClip;
    if (pTarget.mIsZUp)
    {
        if (!qexsdk::KQexClipMakeYUp(*lClip, lTurned))
        {
            pReport.SetOutOfMemory();
            return false;
        }
        lClip = &lTurned;
    }
    if (pTarget.mUnit != 1)
    {
        if (!qexsdk::KQexClipScale(*lClip, pTarget.mUnit, lScaled))
        {
            return pReport.Fail(qexsdk::eFIGURE_USAGE, "", "the lengths in centimetres are too large for single precision");
        }
        lClip = &lScaled;
    }
    return pFigure.Assign(*lClip, pTarget.mName.empty() ? "motion" : pTarget.mName, pReport);
}

/// The skeleton of an AMC file that is written alone. False after an error.
bool ReadSkeleton(const std::string& pPath, qexsdk::KQexAsfSceneOwner& pSkeleton, qexsdk::KQexFigureWriteOptions& pOptions,
                  KQexFigureReport& pReport)
{
    qexsdk::KQexFigureFile          lFile;
    qexsdk::KQexImportAcclaimResult lResult;
    if (!lFile.Open(pPath, pReport))
    {
        return false;
    }
    pSkeleton = qexsdk::KQexImporterAcclaim::ReadSkeleton(lFile.GetSource(), {}, lResult);
    for (const qexsdk::KQexImportMessage& lMessage : lResult.mMessages)
    {
        pReport.Add(lMessage.mPath, lMessage.mMessage);
    }
    pOptions.mSkeleton = pSkeleton.get();
    pOptions.mSkeletonNotes = lResult.mSkeletonNotes;
    return pSkeleton != nullptr;
}

bool WriteFiles(const KQexClip& pClip, const KTarget& pTarget, KQexFigureReport& pReport)
{
    std::vector<qexsdk::KQexFigureOutput> lOutputs;
    qexsdk::KQexFigureWriteOptions        lOptions;
    qexsdk::KQexAsfSceneOwner             lSkeleton;
    KQexFigure                            lFigure;
    for (const std::string& lPath : pTarget.mPaths)
    {
        lOutputs.emplace_back();
        lOutputs.back().mPath = lPath;
        if (!qexsdk::KQexOutputFormatOf(lPath, lOutputs.back().mFormat))
        {
            return pReport.Fail(qexsdk::eFIGURE_USAGE, lPath, "expected a name that ends in .bvh, .glb, .gltf, .asf, .amc, .npz or .csv");
        }
    }
    lOptions.mUnit = pTarget.mUnit;
    lOptions.mThreads = 1; // As loading does.
    lOptions.mZUp = pTarget.mIsZUp;
    lOptions.mOrder = static_cast<qexsdk::ERotationOrder>(qexsdk::KQexEulerOrderOf(pTarget.mOrder) / 2);
    lOptions.mBoneMesh = pTarget.mMesh;
    lOptions.mArrays = pTarget.mIsForImitation ? qexsdk::KQexArraySet::eIMITATION : qexsdk::KQexArraySet::eMOTION;
    lOptions.mWriteRate = pTarget.mWriteRate;
    lOptions.mProgress = StopAtSignals();
    return MakeFigure(pClip, pTarget, lFigure, pReport) &&
           (pTarget.mSkeleton.empty() || ReadSkeleton(pTarget.mSkeleton, lSkeleton, lOptions, pReport)) &&
           qexsdk::KQexWriteFigure(lFigure, lOutputs, lOptions, pReport);
}

/// (whether all files were written, messages)
py::tuple Save(const KQexClip& pClip, const KTarget& pTarget)
{
    KQexFigureReport lReport;
    bool             lOk = false;
    {
        const KWithoutLock lWithout;
        lOk = WriteFiles(pClip, pTarget, lReport);
    }
    ThrowIfStopped(lReport);
    return py::make_tuple(lOk, MessagesOf(lReport));
}

/// An SVG picture of some poses; "" if the clip cannot be drawn.
py::str Draw(const KQexClip& pClip, const KTarget& pTarget)
{
    qexsdk::KQexSvg                  lSvg;
    qexsdk::KQexFigurePictureOptions lOptions;
    KQexFigureReport                 lReport;
    bool                             lOk = false;
    {
        const KWithoutLock lWithout;
        KQexFigure         lFigure;
        lOptions.mTitle = pTarget.mName;
        lOk = MakeFigure(pClip, pTarget, lFigure, lReport) &&
              qexsdk::DrawFigure(lFigure, &lFigure.GetTakes().front(), lOptions, lSvg, lReport);
    }
    ThrowIfStopped(lReport);
    return TextOf(lOk ? lSvg.mText : std::string());
}

} // namespace

void AddSaving(py::module_& pModule)
{
    py::class_<KTarget>(pModule, "Target")
        .def(py::init<>())
        .def_readwrite("paths", &KTarget::mPaths)
        .def_readwrite("name", &KTarget::mName)
        .def_readwrite("unit", &KTarget::mUnit)
        .def_readwrite("is_z_up", &KTarget::mIsZUp)
        .def_readwrite("skeleton", &KTarget::mSkeleton)
        .def_readwrite("order", &KTarget::mOrder)
        .def_readwrite("mesh", &KTarget::mMesh)
        .def_readwrite("is_for_imitation", &KTarget::mIsForImitation)
        .def_readwrite("write_rate", &KTarget::mWriteRate);
    pModule.def("save", &Save);
    pModule.def("draw", &Draw);
}

} // namespace qexpython
