#ifndef TESTS_FAULTS_FAULTSTAGE_H
#define TESTS_FAULTS_FAULTSTAGE_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/bvh/kqexfilebvh.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

/// \file
/// The operations that every kind of fault is tried on, and what they work on.

namespace qextest
{

/// Files to read, in every format, and a folder with files that operations replace. Removed with the object.
class KFaultFiles
{
public:
    /// \param pFrames frames of the motions
    explicit KFaultFiles(int pFrames);

    std::string In(const char* pName) const { return (mFolder / "in" / pName).string(); }
    std::string Out(const char* pName) const { return (mFolder / "out" / pName).string(); }

    std::filesystem::path OutFolder() const { return mFolder / "out"; }

    /// Makes every file that can be replaced an old one again, and removes all that stands beside them.
    void ResetOutputs() const;

    /// The bytes of all that is in the folder of outputs, by name.
    std::map<std::string, std::string> GetOutputs() const;

private:
    KTempDir mFolder;
};

/// What an operation works on, made anew for every try: a scene, files objects that later tries use again, and what was told.
struct KStage
{
    explicit KStage(const KFaultFiles& pFiles) : mFiles(pFiles) {}

    KStage(const KStage&) = delete;
    KStage& operator=(const KStage&) = delete;

    /// Puts an imported motion into the scene.
    void ImportMotion();

    /// All that is in the scene and was read beside it: names, and where every node is at several times of every take.
    std::string Describe() const;

    const KFaultFiles&             mFiles;
    KScenePtr                      mScene = MakeScene();
    qexsdk::KQexAsfSceneOwner      mSkeleton;
    std::vector<qexsdk::KQexNode*> mRoots;
    qexsdk::KQexFileAcclaimAsf     mAsf{false};
    qexsdk::KQexFileAcclaimAmc     mAmc{false};
    qexsdk::KQexFileBvh            mBvh;
    qexsdk::KQexFileGltf           mGltf;
    std::string                    mSeen; ///< What was read and is not in the scene.
    std::string                    mTold; ///< The errors, with the files that they are about.
    bool                           mHasError = false;
};

struct KFaultOperation
{
    const char*                  mName;
    bool                         mHasMotion; ///< The scene holds an imported motion before.
    std::vector<const char*>     mInputs;    ///< Files that it reads, by their names in the folder of inputs.
    std::vector<const char*>     mOutputs;   ///< Files that it writes, by their names in the folder of outputs.
    bool                         mIsProgram; ///< A call of the command line, which uses nothing of the stage.
    std::function<bool(KStage&)> mRun;       ///< Says whether it succeeded, and leaves what it told in the stage.
};

std::ostream& operator<<(std::ostream& pOut, const KFaultOperation& pOperation);

/// Fails the test, saying which files differ, when \p pNow are not \p pExpected.
void ExpectSameFiles(const std::map<std::string, std::string>& pNow, const std::map<std::string, std::string>& pExpected);

/// All operations of the library, and conversions as the command line makes them.
const std::vector<KFaultOperation>& FaultOperations();

} // namespace qextest

#endif
