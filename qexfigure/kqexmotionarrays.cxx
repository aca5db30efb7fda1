#include <qexfigure/kqexarraysink.h>
#include <qexscene/kqexrestpose.h>

#include <algorithm>
#include <exception>

namespace qexsdk
{

namespace
{

/// The skeleton at rest, and all transforms.
class KMotionSink : public KQexArraySink
{
public:
    KMotionSink(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions, KQexNpzFile& pFile)
        : KQexArraySink(pFigure, pOptions, pFile),
          mLayer(LayerOf(pOptions.mTake)),
          mDofs(KQexDofColumnsOf(pFigure, pOptions.mTake, pOptions.mSpace.mPerCentimetre))
    {
        AddRate();
        AddSkeleton();
        AddRest();
        const size_t lJoints = pFigure.GetJoints().size();
        mLocalRotations = AddRotations("local_rotations", lJoints);
        mRootPositions = AddRows("root_positions", {3});
        mWorldPositions = AddRows("world_positions", {lJoints, 3});
        mWorldRotations = AddRotations("world_rotations", lJoints);
        mDofAngles = AddDofs(mDofs, "dof_angles");
        pFile.AddNumbers("dof_limits", {KQexArrayType::eFLOAT32, {mDofs.size(), 2}}, KQexLimitsOf(mDofs));
        mHasPositions = NeedsPositions();
        mHasScalings = NeedsScalings();
        mLocalPositions = mHasPositions ? AddRows("local_positions", {lJoints, 3}) : 0;
        mLocalScalings = mHasScalings ? AddRows("local_scalings", {lJoints, 3}) : 0;
    }

    void Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept override
    {
        const KQexFigurePose& lJoints = JointsIn(pThread, pFrame);
        lJoints.GetPosition(KQexSpace::eWORLD, 0, pValues + mRootPositions);
        KQexEvaluateDofs(mDofs, pFrame.GetTime(), pValues + mDofAngles);
        for (size_t i = 0; i < mFigure.GetJoints().size(); ++i)
        {
            mWriter.Convert(lJoints.GetRotation(KQexSpace::eLOCAL, i), pValues + mLocalRotations + 4 * i);
            mWriter.Convert(lJoints.GetRotation(KQexSpace::eWORLD, i), pValues + mWorldRotations + 4 * i);
            lJoints.GetPosition(KQexSpace::eWORLD, i, pValues + mWorldPositions + 3 * i);
            if (mHasPositions)
            {
                lJoints.GetPosition(KQexSpace::eLOCAL, i, pValues + mLocalPositions + 3 * i);
            }
            if (mHasScalings)
            {
                lJoints.GetScaling(i, pValues + mLocalScalings + 3 * i);
            }
        }
    }

private:
    static const KQexAnimLayer* LayerOf(const KQexFigureTake* pTake) { return pTake != nullptr ? KQexLayerOf(pTake->mStack) : nullptr; }

    void AddSkeleton()
    {
        std::vector<std::string> lNames;
        std::vector<double>      lParents;
        std::vector<double>      lEnds;
        for (const KQexFigureJoint& lJoint : mFigure.GetJoints())
        {
            lNames.push_back(lJoint.mName);
            lParents.push_back(lJoint.mParent);
            lEnds.push_back(lJoint.mIsEnd ? 1.0 : 0.0);
        }
        mFile.AddTexts("names", lNames);
        mFile.AddNumbers("parents", {KQexArrayType::eINT32, {lNames.size()}}, lParents);
        mFile.AddNumbers("is_end", {KQexArrayType::eBOOL, {lNames.size()}}, lEnds);
    }

    void AddRest()
    {
        const KQexFrameNodes lNodes(mFigure.GetRoots(), nullptr);
        KQexFrame            lRest(lNodes, eFRAME_ALL);
        KQexFigurePose       lJoints(mFigure.GetJoints(), lNodes, mOptions.mSpace, eFRAME_ALL);
        const size_t         lCount = mFigure.GetJoints().size();
        std::vector<double>  lPositions(3 * lCount);
        std::vector<double>  lRotations(4 * lCount);
        KQexRotationWriter   lContinuous(KQexRotationForm::eQUATERNION, 0, lCount);
        lRest.Evaluate(0, KTime(0));
        lJoints.Set(lRest);
        for (size_t i = 0; i < lCount; ++i)
        {
            lJoints.GetPosition(KQexSpace::eLOCAL, i, &lPositions[3 * i]);
            mWriter.Convert(lJoints.GetRotation(KQexSpace::eLOCAL, i), &lRotations[4 * i]);
        }
        lContinuous.MakeContinuous(lRotations.data());
        mFile.AddNumbers("rest_positions", {KQexArrayType::eFLOAT32, {lCount, 3}}, lPositions);
        mFile.AddNumbers("rest_rotations", {KQexArrayType::eFLOAT32, {lCount, 4}}, lRotations);
    }

    /// Whether rest_positions and root_positions do not have the position of each joint relative to its parent.
    bool NeedsPositions() const
    {
        const std::vector<KQexFigureJoint>& lJoints = mFigure.GetJoints();
        return mFigure.GetRoots().size() > 1 ||
               std::any_of(lJoints.begin(), lJoints.end(),
                           [this](const KQexFigureJoint& pJoint)
                           { return pJoint.mParent >= 0 && DiffersFromRest(pJoint.mNode->mLocalTranslation, mLayer); });
    }

    bool NeedsScalings() const
    {
        const std::vector<KQexFigureJoint>& lJoints = mFigure.GetJoints();
        return std::any_of(lJoints.begin(), lJoints.end(),
                           [this](const KQexFigureJoint& pJoint)
                           {
                               const auto lScaling = pJoint.mNode->mLocalScaling.Get();
                               return lScaling.mData[0] != 1.0 || lScaling.mData[1] != 1.0 || lScaling.mData[2] != 1.0 ||
                                      DiffersFromRest(pJoint.mNode->mLocalScaling, mLayer);
                           });
    }

    const KQexRotationWriter         mWriter{KQexRotationForm::eQUATERNION, 0, 0};
    const KQexAnimLayer*             mLayer;
    const std::vector<KQexDofColumn> mDofs;
    bool                             mHasPositions = false;
    bool                             mHasScalings = false;
    size_t                           mLocalRotations = 0; ///< Starts among a frame's values.
    size_t                           mRootPositions = 0;
    size_t                           mWorldPositions = 0;
    size_t                           mWorldRotations = 0;
    size_t                           mDofAngles = 0;
    size_t                           mLocalPositions = 0;
    size_t                           mLocalScalings = 0;
};

} // namespace

std::unique_ptr<KQexFrameSink> KQexMakeMotionArrays(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions,
                                                    KQexNpzFile& pFile) noexcept
{
    try
    {
        if (pOptions.mSet == KQexArraySet::eMOTION)
        {
            return pFigure.GetRoots().empty() ? nullptr : std::make_unique<KMotionSink>(pFigure, pOptions, pFile);
        }
        return pFigure.GetRoots().size() == 1 ? KMakeImitationSink(pFigure, pOptions, pFile) : nullptr;
    }
    catch (const std::exception&)
    {
        return nullptr;
    }
}

} // namespace qexsdk
