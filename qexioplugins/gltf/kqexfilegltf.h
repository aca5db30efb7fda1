#ifndef QEXIOPLUGINS_GLTF_KQEXFILEGLTF_H
#define QEXIOPLUGINS_GLTF_KQEXFILEGLTF_H

#include <qexioplugins/motion/kqexmotionio.h>
#include <qexioplugins/motion/kqextextfile.h>
#include <qexscene/kqexscene.h>

#include <string>
#include <vector>

/// \file
/// glTF 2.0, as one binary file (.glb) or as JSON with a file of numbers beside it (.gltf and .bin).

namespace qexsdk
{

/// A take to write.
struct QEX_API KQexGltfTake
{
    KQexAnimStack* mStack = nullptr; ///< Not null; its name becomes the animation's.
    KQexSampling   mSampling;        ///< Frames to write; times in the file count from the first.
};

/// How a scene is written as glTF.
struct QEX_API KQexGltfWriteOptions
{
    std::vector<KQexGltfTake> mTakes;           ///< One animation each; none writes the rest pose alone.
    double                    mScale = 0.01;    ///< Units of the file per centimetre; 0.01 gives the metres that glTF asks for.
    bool                      mBoneMesh = true; ///< Bind a simple solid mesh of the bones to the skeleton, so that viewers show something.
    int          mThreads = 0; ///< Threads that evaluate; 0: as many as the machine has, at most 4. The bytes do not depend on it.
    KQexProgress mProgress;    ///< Called now and then; false cancels. Empty: never.
    const KQexBoneDofs*       mBoneDofs = nullptr; ///< Degrees of freedom by node name, written into `extras`; null: none are known. Not owned.
};

/// Writes glTF files. Every node of the trees becomes a node of the file with its rest pose as translation, rotation and scale;
/// pivots and rotation orders are folded in, so that every node's global transform at every frame is the scene's. Skeleton
/// nodes make up a skin with inverse bind matrices at rest.
class QEX_API KQexFileGltf
{
public:
    /// \param pVerb print every message to standard error as well
    explicit KQexFileGltf(bool pVerb = false) : mVerb(pVerb) {}

    /// Writes the trees at \p pRoots to \p pPath: one binary file, or, when the path ends in ".gltf", JSON and beside it the same
    /// name with ".bin". "-" writes a binary file to standard output. Either all files are there afterwards or, after a
    /// failure, which GetMessages() tells, what was there before. Also false when the progress call cancels.
    bool Write(const std::string& pPath, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions);

    /// The same as one binary file in memory. \p pOut is unspecified after a failure.
    bool WriteBuffer(std::string& pOut, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions);

    /// The messages of the last call; their lines are 0.
    const std::vector<KQexTextMessage>& GetMessages() const { return mMessages; }

    /// Adds a message; for the parts of the reader and the writer.
    void Report(KQexTextMessage::ESeverity pSeverity, const std::string& pText);

private:
    bool                         mVerb;
    std::vector<KQexTextMessage> mMessages;
};

} // namespace qexsdk

#endif
