#ifndef TESTS_FAULTS_FAULTSTAGE_H
#define TESTS_FAULTS_FAULTSTAGE_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/bvh/kqexfilebvh.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <tests/faults/failingallocator.h>
#include <tests/faults/faultfiles.h>
#include <tests/support/randomscene.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qextest
{

/// What one run of an operation works on: a scene, file objects that a retry reuses, and the errors reported.
struct KStage
{
    explicit KStage(const KFaultFiles& pFiles) : mFiles(pFiles) {}

    KStage(const KStage&) = delete;
    KStage& operator=(const KStage&) = delete;

    /// Imports the skeleton with its motion.
    void ImportMotion();

    /// The scene and what was read besides it, as text: names, and every node's global transform at several times of every take.
    std::string Describe() const;

    const KFaultFiles&             mFiles;
    KScenePtr                      mScene = MakeScene();
    qexsdk::KQexAsfSceneOwner      mSkeleton;
    std::vector<qexsdk::KQexNode*> mRoots;
    qexsdk::KQexFileAcclaimAsf     mAsf{false};
    qexsdk::KQexFileAcclaimAmc     mAmc{false};
    qexsdk::KQexFileBvh            mBvh;
    qexsdk::KQexFileGltf           mGltf;
    std::string                    mFrameHash; ///< Hash of the frames that ReadAmc() read.
    std::string                    mErrors;    ///< Error messages of the last operation.
    bool                           mHasError = false;
};

/// Runs \p pMake, which prepares what an operation needs, while no allocation fails.
template <typename TMake>
auto MakeUnfailing(const TMake& pMake)
{
    const KUnfailingMemory lUnfailing;
    return pMake();
}

/// Records the outcome in the stage and, on failure, the error texts that \p pText returns.
template <typename TText>
bool Record(KStage& pStage, bool pOk, bool pHasError, const TText& pText)
{
    const KUnfailingMemory lUnfailing;
    pStage.mHasError = pHasError;
    pStage.mErrors = !pOk && pHasError ? pText() : std::string();
    return pOk;
}

} // namespace qextest

#endif
