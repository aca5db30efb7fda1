#include <qexfigure/picture/kqexfigurepicture.h>

#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexfigurejoint.h>
#include <qexfigure/kqexnumbertext.h>
#include <qexfigure/picture/kqexpictureframes.h>
#include <qexfigure/picture/kqexpicturejoints.h>

#include <algorithm>
#include <new>

namespace qexsdk
{

namespace
{

KQexPicture EmptyPicture(const KQexFigurePictureOptions& pOptions)
{
    KQexPicture lPicture;
    lPicture.mPath = pOptions.mPath;
    lPicture.mTitle = pOptions.mTitle;
    lPicture.mViews = pOptions.mViews;
    if (lPicture.mViews.empty())
    {
        lPicture.mViews.push_back(ePICTURE_FRONT);
    }
    return lPicture;
}

/// Makes the picture of one take, or of the figure at rest.
class KFigurePictureMaker
{
public:
    KFigurePictureMaker(KQexFigure& pFigure, const KQexFigureTake* pTake, const KQexFigurePictureOptions& pOptions, KQexPicture& pPicture,
                        KQexFigureReport& pReport)
        : mFigure(pFigure), mTake(pTake), mOptions(pOptions), mPicture(pPicture), mReport(pReport)
    {
    }

    bool Run()
    {
        mPicture = EmptyPicture(mOptions);
        SetPictureJoints(mFigure.GetJoints(), mOptions.mNames, mPicture);
        if (mTake == nullptr)
        {
            Evaluate(KTime(0));
            mPicture.mPoses.push_back(PoseOf(mFigure.GetJoints(), mPositions));
            mPicture.mSubtitle = CountText(static_cast<long long>(mPicture.mNames.size()), "joint", "joints") + " at rest";
            return true;
        }
        if (!mFigure.CollectFrames(*mTake, mFrames))
        {
            throw std::bad_alloc();
        }
        mPicture.mSubtitle =
            CountText(static_cast<long long>(mFrames.mTimes.size()), "frame", "frames") + ", " + ShortText(mTake->mRate) + " a second";
        return AddPoses() && AddTrails();
    }

private:
    void Evaluate(KTime pTime)
    {
        if (!mFigure.Evaluate(mTake, pTime, mPositions))
        {
            throw std::bad_alloc();
        }
    }

    bool AddPoses()
    {
        std::vector<size_t> lFrames = mOptions.mFrames.empty() ? DefaultPictureFrames(mFrames.mTimes.size()) : mOptions.mFrames;
        if (std::any_of(lFrames.begin(), lFrames.end(), [this](size_t pFrame) { return pFrame >= mFrames.mTimes.size(); }))
        {
            return mReport.Fail(eFIGURE_USAGE, mOptions.mPath, "a frame to draw is not in the take");
        }
        const size_t lLeftOut = LimitPictureFrames(lFrames);
        if (lLeftOut > 0)
        {
            mReport.Add(KQexFigureMessage::eNOTE, mOptions.mPath, 0,
                        std::to_string(lLeftOut) + " of " + std::to_string(lFrames.size() + lLeftOut) +
                            " frames are left out: a picture has at most " + std::to_string(MaxPicturePoses()) +
                            " poses, one for each pixel of its width");
        }
        for (const size_t lFrame : lFrames)
        {
            const KTime lTime = mFrames.mTimes[lFrame];
            Evaluate(lTime);
            mPicture.mPoses.push_back(PoseOf(mFigure.GetJoints(), mPositions));
            mPicture.mPoses.back().mCaption = "frame " + std::to_string(mFrames.mNumbers[lFrame]) + ", " +
                                              FixedText(lTime.GetSeconds() - mTake->mOrigin.GetSeconds(), 2) + " s";
        }
        return true;
    }

    /// The joint that the bone's trail follows: the one at the bone's end; for the root, its own joint. -1, with an error, for an unknown
    /// bone.
    int TrailJoint(const std::string& pBone)
    {
        const std::vector<KQexFigureJoint>& lJoints = mFigure.GetJoints();
        const int                           lBone = FindFigureJoint(lJoints, pBone, mOptions.mTrailOption, mReport);
        const auto                          lChild =
            std::find_if(lJoints.begin(), lJoints.end(), [lBone](const KQexFigureJoint& pJoint) { return pJoint.mParent == lBone; });
        return lBone > 0 && lChild != lJoints.end() ? static_cast<int>(lChild - lJoints.begin()) : lBone;
    }

    bool AddTrails()
    {
        std::vector<int> lJoints;
        for (const std::string& lBone : mOptions.mTrails)
        {
            lJoints.push_back(TrailJoint(lBone));
            if (lJoints.back() < 0)
            {
                return false;
            }
            mPicture.mTrails.push_back({lBone, mPicture.mSides[static_cast<size_t>(lJoints.back())], {}});
        }
        for (size_t lFrame = 0; !lJoints.empty() && lFrame < mFrames.mTimes.size(); ++lFrame)
        {
            Evaluate(mFrames.mTimes[lFrame]);
            for (size_t lTrail = 0; lTrail < lJoints.size(); ++lTrail)
            {
                mPicture.mTrails[lTrail].mPoints.push_back(mPositions[static_cast<size_t>(lJoints[lTrail])]);
            }
            if (mOptions.mProgress && !mOptions.mProgress(static_cast<double>(lFrame + 1) / static_cast<double>(mFrames.mTimes.size())))
            {
                mReport.SetCancelled();
                return false;
            }
        }
        mPicture.mInPlace = !lJoints.empty();
        return true;
    }

    KQexFigure&                     mFigure;
    const KQexFigureTake*           mTake;
    const KQexFigurePictureOptions& mOptions;
    KQexPicture&                    mPicture;
    KQexFigureReport&               mReport;
    KQexFigureFrames                mFrames;
    std::vector<KQexFigurePoint>    mPositions;
};

} // namespace

bool MakeFigurePicture(KQexFigure& pFigure, const KQexFigureTake* pTake, const KQexFigurePictureOptions& pOptions, KQexPicture& pPicture,
                       KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport, [&] { return KFigurePictureMaker(pFigure, pTake, pOptions, pPicture, pReport).Run(); });
}

bool MakeSkeletonPicture(const KQexSkeletonFile& pSkeleton, const KQexFigurePictureOptions& pOptions, KQexPicture& pPicture,
                         KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport,
                      [&]
                      {
                          pPicture = EmptyPicture(pOptions);
                          const KQexAsfScene* lScene = pSkeleton.GetScene();
                          if (lScene != nullptr && lScene->mName[0] != '\0')
                          {
                              pPicture.mTitle = lScene->mName;
                          }
                          KQexPicturePose          lPose;
                          std::vector<std::string> lNames;
                          for (const KQexRestBone& lBone : pSkeleton.GetBones())
                          {
                              lNames.push_back(lBone.mNode->mName);
                              lPose.mStarts.push_back(lBone.mStart);
                              lPose.mEnds.push_back(lBone.mEnd);
                          }
                          SetPictureBones(lNames, pOptions.mNames, pPicture);
                          KQexFigurePoint lMin;
                          KQexFigurePoint lMax;
                          pSkeleton.GetBounds(lMin, lMax);
                          pPicture.mSubtitle = CountText(static_cast<long long>(lNames.size()) - 1, "bone", "bones") + ", " +
                                               FixedText(lMax.mY - lMin.mY, 1) + " cm high at rest";
                          pPicture.mPoses.push_back(std::move(lPose));
                          return true;
                      });
}

bool DrawFigure(KQexFigure& pFigure, const KQexFigureTake* pTake, const KQexFigurePictureOptions& pOptions, KQexSvg& pSvg,
                KQexFigureReport& pReport) noexcept
{
    KQexPicture lPicture;
    pSvg.mText.clear();
    return MakeFigurePicture(pFigure, pTake, pOptions, lPicture, pReport) && DrawPicture(lPicture, 0, pSvg, pReport);
}

} // namespace qexsdk
