#include <apps/asf/commands/editfiles.h>

#include <apps/asf/figure/loading.h>
#include <apps/asf/outputname.h>
#include <apps/asf/outputs.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kbase/kpath.h>

#include <set>

namespace asfapp
{

namespace
{

const std::string kMotionField = "{name}";

/// Replaces {name} by the name of the motion's file without folder and extension.
std::string PathFor(std::string pOutput, const qexsdk::KQexFigureFile& pMotion)
{
    const size_t      lField = pOutput.find(kMotionField);
    const std::string lStem = pMotion.GetPath() == "-" ? "motion" : qexsdk::KPathStem(pMotion.GetPath());
    return lField == std::string::npos ? pOutput : pOutput.replace(lField, kMotionField.size(), lStem);
}

/// Opens an ASF or AMC file. False after an error.
bool OpenAcclaim(qexsdk::KQexFigureFile& pFile, const std::string& pPath, KConsole& pConsole)
{
    if (!OpenFile(pFile, pPath, pConsole))
    {
        return false;
    }
    if (pFile.HasOwnMotion())
    {
        pConsole.Message(eERROR, pFile.GetDisplayPath(), 0, "is not an ASF or AMC file");
        pConsole.Raise(eEXIT_USAGE);
    }
    return !pFile.HasOwnMotion();
}

std::string CountFiles(size_t pSkeletons, size_t pMotions)
{
    return CountText(static_cast<long long>(pSkeletons), "skeleton", "skeletons") + " and " +
           CountText(static_cast<long long>(pMotions), "motion", "motions");
}

} // namespace

bool KEditFiles::Open(const std::vector<std::string>& pInputs, const std::vector<std::string>& pOutputs, KConsole& pConsole)
{
    return OpenInputs(pInputs, pConsole) && AssignOutputs(pOutputs, pConsole) && CheckOutputs(pInputs, pConsole);
}

bool KEditFiles::OpenInputs(const std::vector<std::string>& pInputs, KConsole& pConsole)
{
    for (const std::string& lPath : pInputs)
    {
        qexsdk::KQexFigureFile lFile;
        if (!OpenAcclaim(lFile, lPath, pConsole))
        {
            return false;
        }
        if (lFile.GetFormat() == qexsdk::eFIGURE_AMC)
        {
            mMotions.push_back(lFile);
        }
        else
        {
            mSkeleton = lFile;
        }
    }
    const size_t lSkeletons = pInputs.size() - mMotions.size();
    if (lSkeletons != 1)
    {
        pConsole.Fail(eEXIT_USAGE, "expected one skeleton and any number of its motions, not " + CountFiles(lSkeletons, mMotions.size()));
    }
    return lSkeletons == 1;
}

bool KEditFiles::AssignOutputs(const std::vector<std::string>& pOutputs, KConsole& pConsole)
{
    std::vector<std::string> lMotions;
    for (const std::string& lPath : pOutputs)
    {
        if (qexsdk::KPathExtension(lPath) == ".amc")
        {
            lMotions.push_back(lPath);
        }
        else
        {
            mSkeletonOutput = lPath;
        }
    }
    const bool   lIsTemplate = lMotions.size() == 1 && lMotions.front().find(kMotionField) != std::string::npos;
    const size_t lSkeletons = pOutputs.size() - lMotions.size();
    if (!CheckOutputName(lSkeletons > 0 || !mMotions.empty() ? mSkeletonOutput : lMotions.front(), "edit", {".asf"}, pConsole))
    {
        return false;
    }
    if (lSkeletons != 1 || (lIsTemplate ? mMotions.empty() : lMotions.size() != mMotions.size()))
    {
        pConsole.Fail(eEXIT_USAGE, "--output: expected as many files as are read, " + CountFiles(1, mMotions.size()) + " (.amc), not " +
                                       CountFiles(lSkeletons, lMotions.size()));
        return false;
    }
    for (size_t lMotion = 0; lMotion < mMotions.size(); ++lMotion)
    {
        mMotionOutputs.push_back(PathFor(lMotions[lIsTemplate ? 0 : lMotion], mMotions[lMotion]));
    }
    return true;
}

/// No output may be an input, or written twice.
bool KEditFiles::CheckOutputs(const std::vector<std::string>& pInputs, KConsole& pConsole) const
{
    std::set<std::string>    lSeen;
    std::vector<std::string> lOutputs = mMotionOutputs;
    lOutputs.push_back(mSkeletonOutput);
    for (const std::string& lOutput : lOutputs)
    {
        if (!lSeen.insert(lOutput).second)
        {
            pConsole.Fail(eEXIT_USAGE, "--output: " + lOutput + " would be written twice");
            return false;
        }
        if (!CheckOutput(lOutput, pInputs, pConsole))
        {
            return false;
        }
    }
    return true;
}

} // namespace asfapp
