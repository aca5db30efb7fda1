#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFTRACKS_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFTRACKS_H

#include <qexioplugins/gltf/kqexgltfbuffer.h>
#include <qexscene/kqexframesink.h>

#include <cstddef>
#include <vector>

namespace qexsdk
{

/// A property of a node that a take animates: one value for each frame.
struct KQexGltfTrack
{
    size_t           mNode;              ///< Index of the file's node.
    const KQexNode*  mSource;            ///< The scene's node.
    KQexNodeProperty mProperty;          ///< What it animates.
    double           mRest[4];           ///< Its value at rest: as in the file.
    size_t           mIndex = 0;         ///< Index of the source in a frame.
    size_t           mFirst = 0;         ///< Index of its first number among a frame's.
    bool             mHasMotion = false; ///< A frame differs from rest.

    /// Numbers of a value.
    size_t GetSize() const { return mProperty == eNODE_ROTATION ? 4 : 3; }
};

/// Collects the frames of a take, track by track, in the space after the accessors of a file's buffer. Methods may throw std::bad_alloc.
class KQexGltfTracks : public KQexFrameSink
{
public:
    /// For \p pFrames frames; lengths are multiplied by \p pScale. \p pBuffer must outlive it and stay as it is until the run is over.
    KQexGltfTracks(KQexGltfBuffer& pBuffer, long long pFrames, double pScale);

    /// Adds a track for each property of \p pNode that \p pLayer animates; \p pIndex is its index in the file.
    void AddNode(KQexNode* pNode, size_t pIndex, const KQexAnimLayer* pLayer);

    /// All tracks.
    const std::vector<KQexGltfTrack>& GetTracks() const { return mTracks; }

    /// Makes an accessor of a track's numbers; called for ascending tracks. Returns its index.
    int Keep(const KQexGltfTrack& pTrack);

    void         Begin(const KQexFrameNodes& pNodes, int pThreads) override;
    unsigned int GetParts() const override { return eFRAME_ROTATIONS; }
    size_t       GetValueCount() const override { return mValueCount; }
    void         Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept override;
    void         MakeContinuous(double* pValues) override;
    bool         Write(const KQexFrameBlock& pBlock) override;

private:
    void WriteTrack(KQexGltfTrack& pTrack, const KQexFrameBlock& pBlock);

    KQexGltfBuffer&            mBuffer;
    const long long            mFrames;
    const double               mScale;
    std::vector<KQexGltfTrack> mTracks;
    size_t                     mValueCount = 0;
    std::vector<double>        mLast; ///< Numbers of the frame before; of the rest pose before the first.
};

} // namespace qexsdk

#endif
