#ifndef QEXIOPLUGINS_GLTF_KQEXFILEGLTF_H
#define QEXIOPLUGINS_GLTF_KQEXFILEGLTF_H

#include <qexioplugins/motion/kqexmotionio.h>
#include <qexioplugins/motion/kqextextfile.h>
#include <qexscene/kqexscene.h>

#include <cstddef>
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
    int                 mThreads = 0; ///< Threads that evaluate; 0: as many as the machine has, at most 4. The bytes do not depend on it.
    KQexProgress        mProgress;    ///< Called now and then; false cancels. Empty: never.
    const KQexBoneDofs* mBoneDofs = nullptr; ///< Degrees of freedom by node name, written into `extras`; null: none are known. Not owned.
};

/// How a glTF file is read into a scene.
struct QEX_API KQexGltfReadOptions
{
    KQexNode*    mParentNode = nullptr;  ///< Node that gets the top nodes as children; null: the scene's root node.
    double       mScale = 100.0;         ///< Factor of translations: centimetres per unit of the file, which is the metre.
    double       mFramesPerSecond = 0.0; ///< Rate at which animations are sampled; 0: the one on which their keys stand, else 120.
    KQexProgress mProgress;              ///< Called now and then; false cancels. Empty: never.
};

/// What was read.
struct QEX_API KQexGltfReadResult
{
    std::vector<KQexNode*>    mRoots;    ///< The top nodes, in the file's order; owned by the scene. Empty on failure.
    std::vector<KQexGltfTake> mTakes;    ///< One for each animation that moves a node; owned by the scene. Empty on failure.
    KQexBoneDofs              mBoneDofs; ///< The degrees of freedom that the nodes' `extras` tell of, as the writer puts them there.
    bool                      mCancelled = false; ///< The progress call asked to stop.
};

/// Reads and writes glTF files.
///
/// Reading: the nodes of the file's scene become nodes; translations are scaled, rotations become Euler angles of the order in
/// `extras.rotationOrder`, else XYZ, and a matrix is taken apart (a shear is left out with a warning). The joints of skins get a
/// skeleton attribute, all nodes do when there is no skin; a leaf that only holds a skinned mesh is left out. Each animation
/// becomes a take: whatever the interpolation, it is sampled at evenly spaced times, angles continuous from frame to frame. What a
/// node's `extras` say of limits becomes its limits. Meshes, images and everything else that is not motion is not looked at, and
/// no file is opened but buffers in the model's own folder. Nothing in the file is trusted: each index, offset and count is checked.
///
/// Writing: every node of the trees becomes a node of the file with its rest pose as translation, rotation and scale;
/// pivots and rotation orders are folded in, so that every node's global transform at every frame is the scene's. Skeleton
/// nodes make up a skin with inverse bind matrices at rest.
class QEX_API KQexFileGltf
{
public:
    /// \param pVerb print every message to standard error as well
    explicit KQexFileGltf(bool pVerb = false);

    /// Writes the trees at \p pRoots to \p pPath: one binary file, or, when the path ends in ".gltf", JSON and beside it the same
    /// name with ".bin". "-" writes a binary file to standard output. Either all files are there afterwards or, after a
    /// failure, which GetMessages() tells, what was there before. Also false when the progress call cancels.
    bool Write(const std::string& pPath, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions);

    /// The same as one binary file in memory. \p pOut is unspecified after a failure.
    bool WriteBuffer(std::string& pOut, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions);

    /// Reads the file at \p pPath, binary or JSON whatever its name, into \p pScene; "-" is standard input. Takes whose names the
    /// scene has already get another one. False after an error or a cancel, which GetMessages() tells of: the scene is then as it
    /// was. A file whose animations would make more than four million keys and sixteen for each of its bytes is refused.
    bool Read(const std::string& pPath, KQexScene* pScene, const KQexGltfReadOptions& pOptions, KQexGltfReadResult& pResult);

    /// The same for \p pSize bytes at \p pData, which may refer to no file.
    bool ReadBuffer(const char* pData, size_t pSize, KQexScene* pScene, const KQexGltfReadOptions& pOptions, KQexGltfReadResult& pResult);

    /// The messages of the last call; their lines are 0.
    const std::vector<KQexTextMessage>& GetMessages() const { return mMessages; }

    /// \name For the parts of the reader and the writer
    ///@{

    /// Forgets the messages of the call before.
    void ClearMessages() { mMessages.clear(); }

    /// Adds a message.
    void Report(KQexTextMessage::ESeverity pSeverity, const std::string& pText);

    /// Adds the exception being handled as an error.
    void ReportException() noexcept;
    ///@}

private:
    bool                         mVerb;
    std::vector<KQexTextMessage> mMessages;
};

} // namespace qexsdk

#endif
