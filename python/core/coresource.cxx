#include <python/core/coresource.h>

#include <new>
#include <utility>
#include <vector>

namespace qexpython
{

namespace py = pybind11;

using qexsdk::KQexFigureFile;
using qexsdk::KQexFigureMessage;
using qexsdk::KQexFigureReport;

namespace
{

bool OpenOne(std::optional<std::string>& pBytes, const std::string& pName, KQexFigureFile& pFile, KQexFigureReport& pReport)
{
    return pBytes ? pFile.OpenBuffer(std::move(*pBytes), pName, pReport) : pFile.Open(pName, pReport);
}

} // namespace

bool KSource::Open(qexsdk::KQexFigureFiles& pFiles, KQexFigureReport& pReport)
{
    std::vector<KQexFigureFile>    lFiles(1);
    qexsdk::KQexFigureFilesOptions lOptions;
    lOptions.mSkeletonOption = "skeleton=";
    if (!OpenOne(mContents, mPath, lFiles.front(), pReport))
    {
        return false;
    }
    if (!mFormat.empty())
    {
        lFiles.front().SetFormat(mFormat);
    }
    if (mContents && lFiles.front().GetFormat() == qexsdk::eFIGURE_AMC && mSkeleton.empty() && mPath.find('/') == std::string::npos)
    {
        // Any skeleton of the current folder would do for a motion without a folder of its own.
        return pReport.Fail(qexsdk::eFIGURE_USAGE, mPath, "is a motion, whose skeleton is not known: give skeleton= or base_dir=");
    }
    if (mSkeletonContents)
    {
        lFiles.emplace_back();
        if (!OpenOne(mSkeletonContents, mSkeleton, lFiles.back(), pReport))
        {
            return false;
        }
        lFiles.back().SetFormat("asf");
    }
    else
    {
        lOptions.mSkeleton = mSkeleton;
    }
    return pFiles.Assign(lFiles, lOptions, pReport);
}

py::str TextOf(const std::string& pBytes)
{
    PyObject* const lText = PyUnicode_DecodeUTF8(pBytes.data(), static_cast<Py_ssize_t>(pBytes.size()), "surrogateescape");
    return lText != nullptr ? py::reinterpret_steal<py::str>(lText) : throw py::error_already_set();
}

py::list MessagesOf(const KQexFigureReport& pReport)
{
    static const char* const sWords[] = {"note", "warning", "error"};
    py::list                 lList;
    for (const KQexFigureMessage& lMessage : pReport.GetMessages())
    {
        lList.append(py::make_tuple(TextOf(lMessage.mPath), lMessage.mLine, sWords[lMessage.mSeverity], TextOf(lMessage.mText),
                                    TextOf(qexsdk::KQexKindOfMessage(lMessage.mText))));
    }
    return lList;
}

void ThrowIfStopped(const KQexFigureReport& pReport)
{
    if (PyErr_Occurred() != nullptr)
    {
        throw py::error_already_set();
    }
    if (pReport.IsOutOfMemory())
    {
        throw std::bad_alloc();
    }
    if (pReport.IsCancelled())
    {
        PyErr_SetNone(PyExc_SystemExit); // The interpreter ends: this ends the thread without a word.
        throw py::error_already_set();
    }
}

} // namespace qexpython
