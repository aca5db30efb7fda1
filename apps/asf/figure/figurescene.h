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

/// The files that a figure is read from: a skeleton and its motions, or one file of another format that holds both.
struct KFigureInput
{
    KInputFile              mFigure;  ///< ASF, BVH or glTF.
    std::vector<KInputFile> mMotions; ///< AMC files; none beside another format than ASF.

    /// The paths of all files that are read.
    std::vector<std::string> GetPaths() const;

    /// Looks at \p pPaths and sorts them; of motions alone the skeleton is --asf's or found. \p pFrom: asf, amc, bvh, glb, gltf or,
    /// when empty, as the files look. False after an error.
    bool Open(const std::vector<std::string>& pPaths, const std::string& pFrom, const KMotionOptions& pOptions, KConsole& pConsole);

    /// The same for files that were opened before.
    bool Take(std::vector<KInputFile> pFiles, const KMotionOptions& pOptions, KConsole& pConsole);

private:
    bool FindSkeletonOfAll(const KMotionOptions& pOptions, KConsole& pConsole);
    bool CheckTogether(bool pHasFigure, KConsole& pConsole) const;
};

/// How a figure is read.
struct KFigureOptions
{
    double                     mSamples = 0;           ///< Frames a second of AMC motions; 0: their own, else 120.
    double                     mSampleRate = 0;        ///< Frames a second at which curves of glTF are sampled; 0: their own.
    std::string                mTake;                  ///< Name of the take of a lone motion; one of the takes where there are several.
    bool                       mRemoveDummies = false; ///< Leave out bones that only fill a gap.
    bool                       mKeepGoodFrames = false;
    bool                       mReduce = false;
    qexsdk::KQexRotationFilter mFilter = qexsdk::eROTATION_FILTER_UNROLL;
};

/// A motion of a figure.
struct KFigureTake
{
    std::string            mName; ///< Of the take, or of its file without folder and extension.
    qexsdk::KQexAnimStack* mStack = nullptr;
    bool                   mIsSingle = false; ///< One frame, though there are keys behind it.
    long long              mFrames = 0;       ///< Frames of the file where they need not be evenly spaced, else 0.
};

/// Says so when \p pSampling has far more frames than the file that \p pTake comes from: a file of two frames whose numbers are a
/// thousand millions apart would otherwise fill a disk. False then.
bool CheckSpan(const KFigureTake& pTake, const qexsdk::KQexSampling& pSampling, KConsole& pConsole);

/// A figure in a host scene, whatever format it came from. In centimetres, y up.
class KFigureScene
{
public:
    KFigureScene();
    ~KFigureScene();
    KFigureScene(const KFigureScene&) = delete;
    KFigureScene& operator=(const KFigureScene&) = delete;

    /// Reads \p pInput and prints the messages. Once for each object. False after an error.
    bool Load(const KFigureInput& pInput, const KFigureOptions& pOptions, KConsole& pConsole);

    qexsdk::KQexScene&                    GetScene() const { return *mScene; }
    const std::vector<qexsdk::KQexNode*>& GetRoots() const { return mRoots; }

    /// The node to make a skeleton of: the only root, or the scene's own above several.
    qexsdk::KQexNode* GetTop() const { return mRoots.size() == 1 ? mRoots.front() : mScene->GetRootNode(); }

    /// The takes asked for, in the order of the files; none for a figure at rest.
    const std::vector<KFigureTake>& GetTakes() const { return mTakes; }

    /// Degrees of freedom and limits by bone; null when the format has none.
    const qexsdk::KQexBoneDofs* GetBoneDofs() const { return mHasDofs ? &mDofs : nullptr; }

    /// Leaves the limits, not the degrees of freedom, out of GetBoneDofs().
    void DropLimits();

    /// The skeleton that was read, null for other formats.
    qexsdk::KQexAsfScene* GetSkeleton() const { return mSkeleton.get(); }

    /// What its file said beyond it; empty without one.
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

/// Opens all of \p pPaths. \p pFrom tells what a lone one is. False after an error.
bool OpenFiles(const std::vector<std::string>& pPaths, const std::string& pFrom, std::vector<KInputFile>& pFiles, KConsole& pConsole);

/// A file's name without its folder and extension; "motion" for standard input.
std::string FileStem(const std::string& pPath);

/// Whether a node is called like one that an export put in front of another: after a child, with "Dummy" behind it.
bool IsNamedAsFiller(const qexsdk::KQexNode& pNode);

/// Takes out nodes that an export put in front of others to fill a gap: named after a child with "Dummy" behind it, never turned, and
/// moved by no take. The children keep their places; they go behind their new brothers.
/// \return the number of nodes taken out
int RemoveFillers(qexsdk::KQexNode* pRoot, const std::vector<KFigureTake>& pTakes);

} // namespace asfapp

#endif
