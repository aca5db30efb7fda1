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
/// Operations to inject faults into, and the files and scene they work on.

namespace qextest
{

/// Input files in every format, and a folder of output files that operations replace. Deleted with the object.
class KFaultFiles
{
public:
    /// \param pFrames number of frames of the motions
    explicit KFaultFiles(int pFrames);

    std::string In(const char* pName) const { return (mFolder / "in" / pName).string(); }
    std::string Out(const char* pName) const { return (mFolder / "out" / pName).string(); }

    std::filesystem::path OutFolder() const { return mFolder / "out"; }

    /// Resets every output to its old content and removes all other files of the folder.
    void ResetOutputs() const;

    /// Contents of all files in the output folder, by name.
    std::map<std::string, std::string> GetOutputs() const;

private:
    KTempDir mFolder;
};

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

struct KFaultOperation
{
    const char*                  mName;
    bool                         mNeedsMotion;       ///< Needs an imported motion in the scene.
    std::vector<const char*>     mInputs;            ///< Names of the input files that it reads.
    std::vector<const char*>     mOutputs;           ///< Names of the output files that it writes.
    bool                         mIsProgram;         ///< A command line run; it does not use the scene.
    std::function<bool(KStage&)> mRun;               ///< Returns whether it succeeded; stores its errors in the stage.
    bool                         mNeedsFile = false; ///< Its outputs are files with a table of contents, which pipes and devices cannot be.
};

std::ostream& operator<<(std::ostream& pOut, const KFaultOperation& pOperation);

/// Expects \p pNow to equal \p pExpected and names each file that differs.
void ExpectSameFiles(const std::map<std::string, std::string>& pNow, const std::map<std::string, std::string>& pExpected);

/// All operations of the library, and conversions by the command line.
const std::vector<KFaultOperation>& FaultOperations();

} // namespace qextest

#endif
