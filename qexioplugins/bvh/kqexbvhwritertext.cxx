#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kmath/keulertable.h>
#include <qexioplugins/bvh/kqexbvhwriter.h>

#include <algorithm>
#include <new>

namespace qexsdk
{

namespace
{

constexpr int kDecimals = 6;   ///< Maximum number of digits after the decimal point.
constexpr int kMaxIndent = 64; ///< Indentation stops at this level, so that a deep chain does not cost the square of its depth.

int IndentLevel(int pLevel)
{
    return std::min(pLevel, kMaxIndent);
}

/// Appends a number and a blank.
void AppendNumber(std::string& pText, double pValue)
{
    if (!KNumberAppendFixed(pText, pValue, kDecimals))
    {
        throw std::bad_alloc();
    }
    pText += ' ';
}

} // namespace

void KQexBvhWriter::PrintVector(int pLevel, const char* pWord, const double* pVector)
{
    std::string lLine(static_cast<size_t>(2 * pLevel), ' ');
    lLine += pWord;
    lLine += ' ';
    for (int i = 0; i < 3; ++i)
    {
        AppendNumber(lLine, pVector[i] * mOptions.mScale);
    }
    lLine.back() = '\n';
    mFile.Print(0, "%s", lLine.c_str());
}

void KQexBvhWriter::PrintChannels(int pLevel, const KQexBvhJoint& pJoint)
{
    static const char* const sAxes = "XYZ";
    const int*               lRow = KmEulerAxis[mCode];
    mFile.Print(pLevel, "CHANNELS %d%s %crotation %crotation %crotation\n", pJoint.mHasPositions ? 6 : 3,
                pJoint.mHasPositions ? " Xposition Yposition Zposition" : "", sAxes[lRow[2]], sAxes[lRow[1]], sAxes[lRow[0]]);
}

void KQexBvhWriter::OpenJoint(size_t pJoint, int pLevel)
{
    const KQexBvhJoint& lJoint = mJoints[pJoint];
    double              lOffset[3];
    KmVset(lOffset, lJoint.mOffset);
    ToFileAxes(lOffset);
    if (lJoint.mIsEndSite)
    {
        mFile.Print(IndentLevel(pLevel), "End Site\n");
    }
    else
    {
        mFile.Print(IndentLevel(pLevel), "%s %s\n", lJoint.mParent < 0 ? "ROOT" : "JOINT", mNames[pJoint].c_str());
    }
    mFile.Print(IndentLevel(pLevel), "{\n");
    PrintVector(IndentLevel(pLevel + 1), "OFFSET", lOffset);
    if (!lJoint.mIsEndSite)
    {
        PrintChannels(IndentLevel(pLevel + 1), lJoint);
    }
}

/// Closes a joint's braces; a childless joint gets an end site first, which readers expect at every leaf.
void KQexBvhWriter::CloseJoint(size_t pJoint, int pLevel)
{
    const KQexBvhJoint& lJoint = mJoints[pJoint];
    if (!lJoint.mIsEndSite && lJoint.mNode->GetFirstChild() == nullptr)
    {
        const double lZero[3] = {0.0, 0.0, 0.0};
        mFile.Print(IndentLevel(pLevel + 1), "End Site\n");
        mFile.Print(IndentLevel(pLevel + 1), "{\n");
        PrintVector(IndentLevel(pLevel + 2), "OFFSET", lZero);
        mFile.Print(IndentLevel(pLevel + 1), "}\n");
    }
    mFile.Print(IndentLevel(pLevel), "}\n");
}

void KQexBvhWriter::WriteHierarchy()
{
    mFile.Print(0, "HIERARCHY\n");
    std::vector<size_t> lOpen;
    for (size_t i = 0; i <= mJoints.size(); ++i)
    {
        const int lParent = i < mJoints.size() ? mJoints[i].mParent : -1;
        while (!lOpen.empty() && static_cast<int>(lOpen.back()) != lParent)
        {
            CloseJoint(lOpen.back(), static_cast<int>(lOpen.size()) - 1);
            lOpen.pop_back();
        }
        if (i < mJoints.size())
        {
            OpenJoint(i, static_cast<int>(lOpen.size()));
            lOpen.push_back(i);
        }
    }
}

/// Euler angles are stored in the order of application and written in the reverse order.
void KQexBvhWriter::Format(long long, const double* pValues, std::string& pText) const
{
    for (const KQexBvhJoint& lJoint : mJoints)
    {
        if (lJoint.mIsEndSite)
        {
            continue;
        }
        for (int i = lJoint.mHasPositions ? 3 : 0; i > 0; --i)
        {
            AppendNumber(pText, *pValues++);
        }
        for (int i = 2; i >= 0; --i)
        {
            AppendNumber(pText, pValues[i]);
        }
        pValues += 3;
    }
    pText.back() = '\n';
}

bool KQexBvhWriter::Write(const KQexFrameBlock& pBlock)
{
    return mFile.GetOutput().Write(pBlock.mText.data(), pBlock.mText.size());
}

void KQexBvhWriter::WriteMotionStart()
{
    const long long lCount = mOptions.mSampling.mCount;
    char            lStep[kNumberBufferSize];
    char*           lEnd = KNumberPrint(lStep, lStep + sizeof lStep, mOptions.mSampling.mStep.GetSeconds(), 'g', 10);
    mFile.Print(0, "MOTION\nFrames: %lld\nFrame Time: %.*s\n", lCount, static_cast<int>(lEnd - lStep), lStep);
}

} // namespace qexsdk
