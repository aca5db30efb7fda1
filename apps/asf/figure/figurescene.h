#ifndef APPS_ASF_FIGURE_FIGURESCENE_H
#define APPS_ASF_FIGURE_FIGURESCENE_H

#include <apps/asf/figure/motioninput.h>
#include <apps/asf/inputfile.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexscene/kqexscene.h>

#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

/// The files of a figure: a skeleton and its motions, or one file of another format with both.
struct KFigureInput
{
    KInputFile              mFigure;  ///< ASF, BVH or glTF.
    std::vector<KInputFile> mMotions; ///< AMC files; empty unless mFigure is ASF.

    /// Paths of all files to read.
    std::vector<std::string> GetPaths() const;

    /// Opens \p pPaths and detects their formats. For motions alone, the skeleton is --asf or searched for. \p pFrom: the format of a
    /// single file (asf, amc, bvh, glb, gltf); empty: detected. False after an error.
    bool Open(const std::vector<std::string>& pPaths, const std::string& pFrom, const KMotionOptions& pOptions, KConsole& pConsole);

    /// The same for files that are already open.
    bool Assign(std::vector<KInputFile> pFiles, const KMotionOptions& pOptions, KConsole& pConsole);

private:
    bool FindSharedSkeleton(const KMotionOptions& pOptions, KConsole& pConsole);
    bool CheckFiles(bool pHasFigure, KConsole& pConsole) const;
};

/// Options for reading a figure.
struct KFigureOptions
{
    double                     mMotionRate = 0;        ///< Frames per second of AMC motions; 0: the file's rate, else 120.
    double                     mSampleRate = 0;        ///< Frames per second at which glTF curves are sampled; 0: that of their keys.
    std::string                mTake;                  ///< Name for the take of one AMC or BVH file; else the take to pick.
    bool                       mRemoveDummies = false; ///< Leave out dummy bones.
    bool                       mKeepGoodFrames = false;
    bool                       mReduce = false;
    qexsdk::KQexRotationFilter mFilter = qexsdk::eROTATION_FILTER_UNROLL;
};

/// A motion of a figure.
struct KFigureTake
{
    std::string            mName; ///< The take's name, or its file's without folder and extension.
    qexsdk::KQexAnimStack* mStack = nullptr;
    bool                   mIsSingle = false; ///< One frame, even if the stack has a second key.
    long long              mFrames = 0;       ///< Frames in the file, for formats with gaps between frames; else 0.
};

/// False, with an error, if \p pSampling has far more frames than the file of \p pTake: a file of two frames whose numbers are a
/// billion apart would otherwise fill a disk.
bool CheckSpan(const KFigureTake& pTake, const qexsdk::KQexSampling& pSampling, KConsole& pConsole);

/// A figure of any format, in a host scene. Centimetres, y up.
class KFigureScene
{
public:
    KFigureScene();
    ~KFigureScene();
    KFigureScene(const KFigureScene&) = delete;
    KFigureScene& operator=(const KFigureScene&) = delete;

    /// Reads \p pInput and prints the messages. Call once per object. False after an error.
    bool Load(const KFigureInput& pInput, const KFigureOptions& pOptions, KConsole& pConsole);

    qexsdk::KQexScene&                    GetScene() const { return *mScene; }
    const std::vector<qexsdk::KQexNode*>& GetRoots() const { return mRoots; }

    /// The top node of the skeleton: the only root, or the scene's root node if there are several.
    qexsdk::KQexNode* GetTop() const { return mRoots.size() == 1 ? mRoots.front() : mScene->GetRootNode(); }

    /// The takes to use, in the order of the files; empty for a figure without motion.
    const std::vector<KFigureTake>& GetTakes() const { return mTakes; }

    /// Degrees of freedom and limits by bone; null if the file has none.
    const qexsdk::KQexBoneDofs* GetBoneDofs() const { return mHasDofs ? &mDofs : nullptr; }

    /// Removes the limits, not the degrees of freedom, from GetBoneDofs().
    void DropLimits();

    /// The ASF skeleton that was read; null for other formats.
    qexsdk::KQexAsfScene* GetSkeleton() const { return mSkeleton.get(); }

    /// Details of the ASF file that the skeleton does not keep; empty without a skeleton.
    const qexsdk::KQexAmcSkeletonNotes& GetSkeletonNotes() const { return mSkeletonNotes; }

private:
    bool LoadAcclaim(const KFigureInput& pInput, const KFigureOptions& pOptions, KConsole& pConsole);
    bool LoadBvh(const KInputFile& pFile, const KFigureOptions& pOptions, KConsole& pConsole);
    bool LoadGltf(const KInputFile& pFile, const KFigureOptions& pOptions, KConsole& pConsole);
    bool PickTake(const std::string& pName, KConsole& pConsole);

    qexsdk::KQexScene*             mScene;
    std::vector<qexsdk::KQexNode*> mRoots;
    std::vector<KFigureTake>       mTakes;
    qexsdk::KQexBoneDofs           mDofs;
    bool                           mHasDofs = false;
    qexsdk::KQexAsfSceneOwner      mSkeleton;
    qexsdk::KQexAmcSkeletonNotes   mSkeletonNotes;
};

/// Opens all of \p pPaths. \p pFrom is the format of a single file, empty to detect it. False after an error.
bool OpenFiles(const std::vector<std::string>& pPaths, const std::string& pFrom, std::vector<KInputFile>& pFiles, KConsole& pConsole);

/// A file's name without its folder and extension; "motion" for standard input.
std::string FileStem(const std::string& pPath);

/// Whether a node has the name of a dummy that an export inserted: that of one of its children, with the suffix "Dummy".
bool IsDummyByName(const qexsdk::KQexNode& pNode);

/// Removes the dummies that an export inserted to fill gaps: nodes for which IsDummyByName() is true, that are a pure translation at rest
/// and that no take animates. Their children keep their positions and become the last children of the dummy's parent.
/// \return the number of nodes removed
int RemoveDummyNodes(qexsdk::KQexNode* pRoot, const std::vector<KFigureTake>& pTakes);

} // namespace asfapp

#endif
