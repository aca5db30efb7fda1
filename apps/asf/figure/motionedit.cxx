#include <apps/asf/figure/motionedit.h>

#include <apps/asf/figure/loading.h>
#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/amc/kqexamcheader.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace asfapp
{

namespace
{

using qexsdk::KQexAmcBone;
using qexsdk::KQexAsfNode;

constexpr int kDigits = 15; ///< A product with more would show rounding errors.

void AppendDigits(std::string& pText, double pValue)
{
    char        lNumber[qexsdk::kNumberBufferSize];
    const char* lEnd = qexsdk::KNumberPrint(lNumber, lNumber + sizeof lNumber, pValue, 'g', kDigits);
    pText.append(lNumber, static_cast<size_t>(lEnd - lNumber));
}

/// Appends a number that reads back as \p pValue.
void AppendExact(std::string& pText, double pValue)
{
    const size_t lStart = pText.size();
    double       lRead = 0;
    AppendDigits(pText, pValue);
    if (qexsdk::KNumberParse(std::string_view(pText).substr(lStart), lRead) != qexsdk::KNumberStatus::eOK || lRead != pValue)
    {
        pText.resize(lStart);
        qexsdk::KNumberAppendShortest(pText, pValue);
    }
}

} // namespace

/// Writes each frame as it is read.
class KMotionEdit::KFrames : public qexsdk::KQexAmcVisitor
{
public:
    KFrames(const KMotionEdit& pEdit, qexsdk::KQexFileAcclaimAmc& pReader, const std::string& pAsfName, qexsdk::KOutputFile& pOut)
        : mEdit(pEdit), mReader(pReader), mAsfName(pAsfName), mOut(pOut), mRoot(*pEdit.mOld.mRoot)
    {
    }

    bool Frame(const qexsdk::KQexAmcFrame& pFrame) override
    {
        mText.clear();
        if (pFrame.mIndex == 0)
        {
            AppendHeader();
        }
        mText += std::to_string(pFrame.mNumber) + "\n";
        AppendFirstRoot(pFrame);
        for (const int lIndex : *pFrame.mPresent)
        {
            AppendBone((*pFrame.mBones)[static_cast<size_t>(lIndex)], pFrame);
        }
        return !mIsTooLarge && mOut.Write(mText.data(), mText.size());
    }

    const KRootMotion& GetRoot() const { return mRoot; }

    /// A scaled value is not a number that a file can hold; the read was stopped.
    bool IsTooLarge() const { return mIsTooLarge; }

private:
    void AppendHeader()
    {
        qexsdk::KQexAmcHeader lHeader = mReader.GetHeader();
        lHeader.mAsfFile = mAsfName;
        if (lHeader.mAngle == qexsdk::eAMC_ANGLE_SKELETON)
        {
            // The new skeleton's unit is degrees, whatever the old one's was.
            lHeader.mAngle = mEdit.mOld.mAngleUnit == 1.0 ? qexsdk::eAMC_ANGLE_DEGREES : qexsdk::eAMC_ANGLE_RADIANS;
        }
        // The comment is always written, as by every writer here.
        lHeader.mCommentRate = qexsdk::GetAmcRate(lHeader);
        mText += qexsdk::AmcHeaderText(lHeader);
    }

    /// Up to its first line a root's values are zero, which the new skeleton's root is not the same at.
    void AppendFirstRoot(const qexsdk::KQexAmcFrame& pFrame)
    {
        const bool lHasRoot = !pFrame.mBones->empty() && pFrame.mBones->front().mNode == mEdit.mOld.mRoot;
        if (lHasRoot && pFrame.mIndex == 0 && mRoot.IsNeeded() && pFrame.mBones->front().mFrame != pFrame.mIndex)
        {
            AppendBone(pFrame.mBones->front(), pFrame);
        }
    }

    void AppendBone(const KQexAmcBone& pBone, const qexsdk::KQexAmcFrame& pFrame)
    {
        const KQexAsfNode& lBone = *pBone.mNode;
        const bool         lIsConverted = pBone.mNode == mEdit.mOld.mRoot && mRoot.IsNeeded();
        double             lValues[6];
        std::copy(pBone.mValues, pBone.mValues + 6, lValues);
        if (lIsConverted)
        {
            mRoot.Convert(lValues, pFrame.mLengthFactor, pFrame.mAngleFactor);
        }
        mText += mEdit.mNewBones.at(pBone.mNode)->mName;
        for (int lDof = 0; lDof < lBone.mOrderCount; ++lDof)
        {
            const bool lIsScaled = qexsdk::KIsTranslationDof(lBone.mOrderBuf[lDof]) && mEdit.mScale != 1;
            mText += ' ';
            if (lIsScaled || lIsConverted)
            {
                lValues[lDof] *= lIsScaled ? mEdit.mScale : 1.0;
                mIsTooLarge = mIsTooLarge || !std::isfinite(lValues[lDof]);
                AppendDigits(mText, lValues[lDof]);
            }
            else
            {
                AppendExact(mText, lValues[lDof]);
            }
        }
        mText += '\n';
    }

    const KMotionEdit&          mEdit;
    qexsdk::KQexFileAcclaimAmc& mReader;
    const std::string&          mAsfName;
    qexsdk::KOutputFile&        mOut;
    KRootMotion                 mRoot;
    std::string                 mText; ///< Of the current frame.
    bool                        mIsTooLarge = false;
};

KMotionEdit::KMotionEdit(qexsdk::KQexAsfScene& pOld, const qexsdk::KQexAmcSkeletonNotes& pNotes, const qexsdk::KQexAsfScene& pNew,
                         double pScale, bool pAllowUnmatched)
    : mOld(pOld), mNotes(pNotes), mScale(pScale), mAllowUnmatched(pAllowUnmatched)
{
    qexsdk::KQexAsfWalk lOld(pOld.mRoot);
    qexsdk::KQexAsfWalk lNew(pNew.mRoot);
    while (const KQexAsfNode* lBone = lOld.Next())
    {
        const KQexAsfNode* lEdited = lNew.Next();
        if (lOld.IsEntering() && lBone->mOrderCount > 0)
        {
            mNewBones.emplace(lBone, lEdited);
        }
    }
}

bool KMotionEdit::HasTranslations() const
{
    for (const auto& lPair : mNewBones)
    {
        for (int lDof = 0; lDof < lPair.first->mOrderCount; ++lDof)
        {
            if (qexsdk::KIsTranslationDof(lPair.first->mOrderBuf[lDof]))
            {
                return true;
            }
        }
    }
    return false;
}

std::string KMotionEdit::GetObstacles() const
{
    bool lIsRenamed = false;
    for (const auto& lPair : mNewBones)
    {
        lIsRenamed = lIsRenamed || std::strcmp(lPair.first->mName, lPair.second->mName) != 0;
    }
    std::string lList;
    const auto  lAdd = [&lList](bool pIsObstacle, const char* pText)
    {
        lList += pIsObstacle ? (lList.empty() ? "" : ", ") + std::string(pText) : "";
    };
    lAdd(lIsRenamed, "renamed bones");
    lAdd(mScale != 1 && HasTranslations(), "scaled lengths");
    lAdd(KRootMotion(*mOld.mRoot).IsNeeded(), "the root's rest pose");
    lAdd(!mNotes.mLengthDofs.empty(), "values of l");
    lAdd(mOld.mAngleUnit != 1, "angles in radians");
    return lList;
}

bool KMotionEdit::Write(const qexsdk::KQexFigureFile& pMotion, const std::string& pAsfName, qexsdk::KOutputFile& pOut, KConsole& pConsole)
{
    qexsdk::KQexFileAcclaimAmc lReader(false);
    qexsdk::KQexAmcReadOptions lOptions;
    KFrames                    lFrames(*this, lReader, pAsfName, pOut);
    bool                       lOk = false;
    lOptions.mSkeletonNotes = mNotes;
    {
        KProgress lProgress("writing", pConsole);
        lOptions.mProgress = lProgress.GetFunction();
        lOk = pMotion.OpenFor(lReader) && lReader.ReadFrames(&mOld, lOptions, lFrames);
    }
    if (lOk && !mAllowUnmatched && !lReader.GetInfo().mMatch.IsPlausible())
    {
        // The error replaces a warning for each bone.
        pConsole.Message(eERROR, pMotion.GetDisplayPath(), 0, lReader.GetInfo().mMatch.Describe());
        NoteAllowUnmatched(pConsole);
        pConsole.Raise(eEXIT_INPUT);
        return false;
    }
    qexsdk::KQexFileMessages lMessages;
    lMessages.Take(lReader);
    PrintMessages(lMessages, pMotion.GetDisplayPath(), pConsole);
    if (pOut.HasFailed())
    {
        ReportOutputError(pOut, pOut.GetPath(), pConsole);
        return false;
    }
    if (lFrames.IsTooLarge())
    {
        pConsole.Message(eERROR, pMotion.GetDisplayPath(), lReader.GetLineNumber(), "A value is too large to be scaled");
    }
    if (!lOk)
    {
        pConsole.Raise(pMotion.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
        return false;
    }
    constexpr double kReported = 0.01; // As for motion written anew.
    if (lFrames.GetRoot().GetLostDegrees() > kReported || lFrames.GetRoot().GetLostCentimetres() > kReported)
    {
        pConsole.Message(eWARNING, pMotion.GetDisplayPath(), 0,
                         "The root's degrees of freedom cannot replace its rest pose: up to " +
                             ShortText(lFrames.GetRoot().GetLostDegrees()) + " degrees and " +
                             ShortText(lFrames.GetRoot().GetLostCentimetres()) + " cm are lost");
    }
    return true;
}

} // namespace asfapp
