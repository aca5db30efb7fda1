#include <python/core/corelock.h>
#include <python/core/coremodule.h>
#include <python/core/coresource.h>
#include <qexfigure/check/kqexfigurecheck.h>
#include <qexfigure/kqexfigure.h>

#include <pybind11/stl.h>

#include <utility>
#include <vector>

namespace qexpython
{

namespace
{

namespace py = pybind11;

using qexsdk::KQexFigureReport;
using qexsdk::KQexFigureTake;

/// A take as a clip.
struct KLoaded
{
    KClipPointer mClip;
    std::string  mName;
    bool         mIsDefaultRate = false;
};

/// Appends \p pTake as a clip; null: the rest pose. False after an error.
bool AddTake(const qexsdk::KQexFigure& pFigure, const KQexFigureTake* pTake, double pRate, std::vector<KLoaded>& pLoaded,
             KQexFigureReport& pReport)
{
    KLoaded lLoaded;
    lLoaded.mClip = std::make_shared<qexsdk::KQexClip>();
    lLoaded.mName = pTake != nullptr ? pTake->mName : "";
    lLoaded.mIsDefaultRate = pTake != nullptr && pTake->mIsDefaultRate && !pTake->mIsSingle;
    pLoaded.push_back(lLoaded);
    qexsdk::KQexClipOptions lOptions;
    lOptions.mThreads = 1; // More gain nothing for one motion, and take from programs that load in threads of their own.
    return pFigure.MakeClip(pTake, pRate, lOptions, *lLoaded.mClip, pReport);
}

/// The takes of a figure as clips, the first alone if that is asked for; without takes its rest pose. False after an error.
bool MakeClips(const KSource& pSource, const qexsdk::KQexFigureFiles& pFiles, std::vector<KLoaded>& pLoaded, size_t& pTakes,
               KQexFigureReport& pReport)
{
    qexsdk::KQexFigure        lFigure;
    qexsdk::KQexFigureOptions lOptions;
    lOptions.mMotionRate = pSource.mSourceRate;
    lOptions.mSampleRate = pSource.mRate;
    lOptions.mTake = pSource.mTake;
    lOptions.mTakeOption = "take=";
    lOptions.mRemoveDummies = pSource.mRemoveDummies;
    lOptions.mKeepGoodFrames = pSource.mKeepGoodFrames;
    lOptions.mAllowUnmatched = pSource.mAllowUnmatched;
    lOptions.mKeepDofValues = true;
    lOptions.mProgress = StopAtSignals();
    if (!lFigure.Load(pFiles, lOptions, pReport))
    {
        return false;
    }
    pTakes = lFigure.GetTakes().size();
    bool lOk = pTakes > 0 || AddTake(lFigure, nullptr, 0.0, pLoaded, pReport);
    for (size_t i = 0; i < pTakes && lOk && (i == 0 || !pSource.mFirstOnly); ++i)
    {
        lOk = AddTake(lFigure, &lFigure.GetTakes()[i], pSource.mRate, pLoaded, pReport);
    }
    return lOk;
}

/// (clips or None after an error, number of takes, path of the skeleton's file, format, messages); a clip is (clip, name, default rate).
py::tuple Load(KSource pSource)
{
    qexsdk::KQexFigureFiles lFiles;
    KQexFigureReport        lReport;
    std::vector<KLoaded>    lLoaded;
    size_t                  lTakes = 0;
    bool                    lOk = false;
    {
        const KWithoutLock lWithout;
        lOk = pSource.Open(lFiles, lReport) && MakeClips(pSource, lFiles, lLoaded, lTakes, lReport);
    }
    ThrowIfStopped(lReport);
    py::list lClips;
    for (const KLoaded& lEach : lLoaded)
    {
        lClips.append(py::make_tuple(lEach.mClip, TextOf(lEach.mName), lEach.mIsDefaultRate));
    }
    static const char* const sWords[] = {"asf", "amc", "bvh", "gltf"}; // By KQexFigureFormat.
    const char* const        lFormat = sWords[lFiles.mMotions.empty() ? lFiles.mFigure.GetFormat() : qexsdk::eFIGURE_AMC];
    return py::make_tuple(lOk ? py::object(lClips) : py::none(), lTakes, TextOf(lFiles.mFigure.GetPath()), lFormat, MessagesOf(lReport));
}

/// The messages about a file: those of opening it and its skeleton, then those of the check, by line.
py::list Check(KSource pSource)
{
    qexsdk::KQexFigureFiles        lFiles;
    qexsdk::KQexFileMessages       lMessages;
    KQexFigureReport               lReport;
    qexsdk::KQexFigureCheckOptions lOptions;
    lOptions.mMotionRate = pSource.mSourceRate;
    lOptions.mAllowUnmatched = pSource.mAllowUnmatched;
    lOptions.mLimits = pSource.mLimits;
    lOptions.mProgress = StopAtSignals();
    {
        const KWithoutLock lWithout;
        if (pSource.Open(lFiles, lReport))
        {
            qexsdk::CheckFigure(lFiles, lOptions, lMessages, lReport);
        }
    }
    ThrowIfStopped(lReport);
    const qexsdk::KQexFigureFile& lFile = lFiles.mMotions.empty() ? lFiles.mFigure : lFiles.mMotions.front();
    for (const qexsdk::KQexTextMessage& lMessage : lMessages.mList)
    {
        lReport.Add(lFile.GetDisplayPath(), lMessage);
    }
    return MessagesOf(lReport);
}

} // namespace

void AddFiles(py::module_& pModule)
{
    py::class_<KSource>(pModule, "Source")
        .def(py::init<>())
        .def_readwrite("path", &KSource::mPath)
        .def_readwrite("contents", &KSource::mContents)
        .def_readwrite("skeleton", &KSource::mSkeleton)
        .def_readwrite("skeleton_contents", &KSource::mSkeletonContents)
        .def_readwrite("format", &KSource::mFormat)
        .def_readwrite("fps", &KSource::mRate)
        .def_readwrite("source_fps", &KSource::mSourceRate)
        .def_readwrite("take", &KSource::mTake)
        .def_readwrite("first_only", &KSource::mFirstOnly)
        .def_readwrite("allow_unmatched", &KSource::mAllowUnmatched)
        .def_readwrite("keep_good_frames", &KSource::mKeepGoodFrames)
        .def_readwrite("remove_dummies", &KSource::mRemoveDummies)
        .def_readwrite("limits", &KSource::mLimits);
    pModule.def("load", &Load);
    pModule.def("check", &Check);
}

} // namespace qexpython
