#ifndef QEXIOPLUGINS_GLTF_KQEXFILEGLTF_H
#define QEXIOPLUGINS_GLTF_KQEXFILEGLTF_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/motion/kqexmotionio.h>
#include <qexioplugins/motion/kqextextfile.h>
#include <qexscene/kqexframesink.h>
#include <qexscene/kqexscene.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// \file
/// glTF 2.0, as one binary file (.glb) or as JSON with a separate buffer file (.gltf and .bin).

namespace qexsdk
{

class KQexGltfWriter;

/// A take to write.
struct QEX_API KQexGltfTake
{
    KQexAnimStack* mStack = nullptr;               ///< Not null; the animation gets its name.
    KQexSampling   mSampling;                      ///< Frames to write; the first one is at time 0 in the file.
    KQexSampling   mFileSampling = KQexSampling(); ///< Set by reading: the file's own frames, at whatever rate the curves were sampled.
    std::string    mName = std::string(); ///< Set by reading: the animation's name; the stack's differs from it if two have the same.
};

/// Options for writing glTF.
struct QEX_API KQexGltfWriteOptions
{
    std::vector<KQexGltfTake> mTakes;           ///< One animation each; empty: only the rest pose is written.
    double                    mScale = 0.01;    ///< Units of the file per centimetre; 0.01 gives metres, glTF's unit.
    bool                      mBoneMesh = true; ///< Write a simple mesh of the bones, skinned to the skeleton, so that viewers show it.
    int                 mThreads = 0; ///< Threads that evaluate; 0: as many as the machine has, at most 4. Does not affect the output.
    KQexProgress        mProgress;    ///< Called from time to time; return false to cancel. May be empty.
    const KQexBoneDofs* mBoneDofs = nullptr; ///< Degrees of freedom by node name, written to `extras`; null: none. Not owned.

    /// KQexFileGltf::Write(): not null: receives the outputs, complete but still under temporary names, instead of replacing the files. The
    /// caller commits them together with others (KOutputFile::CommitAll), or destroys them, which discards them. Nothing is added
    /// after a failure.
    std::vector<std::unique_ptr<KOutputFile>>* mPrepared = nullptr;
};

/// Options for reading glTF.
struct QEX_API KQexGltfReadOptions
{
    KQexNode*    mParentNode = nullptr;  ///< Parent of the root nodes; null: the scene's root node.
    double       mScale = 100.0;         ///< Scale of translations: centimetres per file unit, in glTF the metre.
    double       mFramesPerSecond = 0.0; ///< Sampling rate of animations; 0: the rate that fits their keys, or 120 if none does.
    std::string  mBytesPath;             ///< For ReadBuffer(): where the file would be, if it refers to others in its folder.
    KQexProgress mProgress;              ///< Called from time to time; return false to cancel. May be empty.
};

/// Result of reading glTF.
struct QEX_API KQexGltfReadResult
{
    std::vector<KQexNode*>    mRoots;             ///< The root nodes, in the file's order; owned by the scene. Empty on failure.
    std::vector<KQexGltfTake> mTakes;             ///< One for each animation that moves a node; owned by the scene. Empty on failure.
    KQexBoneDofs              mBoneDofs;          ///< Degrees of freedom from the nodes' `extras`, where the writer stores them.
    bool                      mCancelled = false; ///< The progress callback cancelled.
};

/// Reads and writes glTF files.
///
/// Reading: creates the nodes of the file's scene. Translations are scaled, rotations become Euler angles in the order of
/// `extras.rotationOrder`, default XYZ, and a matrix is decomposed (shear is ignored with a warning). The joints of skins get a
/// skeleton attribute; without skins, all nodes do. A leaf that only holds a skinned mesh is skipped. Each animation becomes a take,
/// sampled at even steps whatever its interpolation; angles are continuous from frame to frame. Limits come from a node's `extras`.
/// Meshes, images and everything else that is not motion are ignored. Only buffers in the model's own folder are opened. Nothing in the
/// file is trusted: each index, offset and count is checked.
///
/// Writing: writes every node of the trees with its rest pose as translation, rotation and scale. Pivots and rotation orders are
/// folded in, so that global transforms at every frame equal those of the scene. Each tree gets a skin of its skeleton nodes, or of
/// all its nodes when it has none, with the inverse bind matrices of the rest pose.
class QEX_API KQexFileGltf
{
public:
    /// \param pVerb print every message to standard error as well
    explicit KQexFileGltf(bool pVerb = false);
    ~KQexFileGltf();
    KQexFileGltf(const KQexFileGltf&) = delete;
    KQexFileGltf& operator=(const KQexFileGltf&) = delete;

    /// Writes the trees at \p pRoots to \p pPath: a binary file, or, when the path ends in ".gltf", JSON plus a buffer of the same name
    /// with ".bin". "-" writes a binary file to standard output. False on failure, with the reason in GetMessages(), or when the
    /// progress callback cancels; existing files are then unchanged.
    bool Write(std::string_view pPath, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions);

    /// Writes a binary file to memory. False as Write(); \p pOut is then unchanged.
    bool WriteBuffer(std::string& pOut, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions);

    /// \name Write() in parts, for takes whose frames are evaluated once for several outputs
    ///
    /// BeginWrite(); for each of the options' takes, in order, BeginTake(), KQexRunFrames() with its sink, the same roots, and the take's
    /// layer and sampling, and EndTake() with the result; then EndWrite(). Each fails as Write(), and nothing may follow but another
    /// BeginWrite().
    ///@{

    /// Makes everything but the animations.
    bool BeginWrite(const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions);
    /// The sink for take \p pTake, an index of the options' takes; null when memory runs out. Owned by the file, until EndTake().
    KQexFrameSink* BeginTake(size_t pTake);
    /// Adds the animation.
    bool EndTake(size_t pTake, KQexRunResult pResult);
    /// Writes the file to \p pPath.
    bool EndWrite(std::string_view pPath);
    /// Writes a binary file to \p pOutput, which is open and stays open; see KOutputFile::HasFailed() for a failed write.
    bool EndWrite(KOutputFile& pOutput);
    ///@}

    /// Reads the file at \p pPath, binary or JSON whatever its name, into \p pScene; "-" is standard input. A take whose name is in use
    /// is renamed. False on failure or when cancelled, with the reason in GetMessages(); the scene is then unchanged. Fails when the
    /// animations have more than 4 million keys plus 16 per byte of the file, counted after sampling.
    bool Read(std::string_view pPath, KQexScene* pScene, const KQexGltfReadOptions& pOptions, KQexGltfReadResult& pResult);

    /// Reads \p pSize bytes at \p pData, which may refer to other files only if the options' mBytesPath is set.
    bool ReadBuffer(const char* pData, size_t pSize, KQexScene* pScene, const KQexGltfReadOptions& pOptions, KQexGltfReadResult& pResult);

    /// Messages of the last call; their line is always 0.
    const std::vector<KQexTextMessage>& GetMessages() const { return mMessages; }

    /// \name For the internals of the reader and the writer
    ///@{

    /// Clears the messages of the previous call.
    void ClearMessages() { mMessages.clear(); }

    /// Adds a message, unless memory runs out for it.
    void Report(KQexTextMessage::ESeverity pSeverity, std::string_view pText) noexcept;

    /// Adds an error for the exception that is being handled.
    void ReportException() noexcept;
    ///@}

private:
    bool WriteTakes(const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions);
    template <typename TDo>
    bool Guarded(const TDo& pDo) noexcept;

    bool                            mVerb;
    std::vector<KQexTextMessage>    mMessages;
    std::unique_ptr<KQexGltfWriter> mWriter; ///< Between BeginWrite() and EndWrite().
};

} // namespace qexsdk

#endif
