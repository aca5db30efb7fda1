#ifndef BENCH_SKELETONSUPPORT_H
#define BENCH_SKELETONSUPPORT_H

#include <bench/benchsupport.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <memory>
#include <string>
#include <vector>

/// \file
/// Shared by the benchmarks of skeleton files: reading them, and series over sizes and shapes.

namespace qexbench
{

struct KSceneDeleter
{
    void operator()(qexsdk::KQexAsfScene* pScene) const { pScene->Destroy(); }
};

/// A skeleton, destroyed with its owner.
using KSceneOwner = std::unique_ptr<qexsdk::KQexAsfScene, KSceneDeleter>;

/// Reads a skeleton from \p pText, without clean-up. Aborts on failure.
KSceneOwner ReadText(const std::string& pText);

/// Reads a skeleton from the file \p pPath, and removes its dummies if \p pRemoveDummyNodes. Aborts on failure.
KSceneOwner ReadPath(const std::string& pPath, bool pRemoveDummyNodes);

/// A size of a series. Many small skeletons together take as much memory as a large one. Comparing the large one with them shows how
/// time grows with the size of a skeleton, without the effect of a cache that holds one small skeleton but not the large one.
struct KSize
{
    int mBones;         ///< Bones of each skeleton, not counting its root.
    int mSkeletons = 1; ///< Processed one after the other, but all in memory at once.

    /// Bones of all skeletons.
    int AllBones() const { return mBones * mSkeletons; }

    /// "1000", or "100x1000" for 100 skeletons of 1,000 bones.
    std::string Name() const;
};

/// One benchmark of a series.
struct KCase
{
    std::string mSeries; ///< "Read"
    EShape      mShape;
    KSize       mSize;

    /// Adds the counters of ReportItems() per bone. For 100,000 bones also of_1000 and of_100x1000: the time per bone divided by that
    /// of the 1,000-bone cases of the same series and shape, if they ran before.
    void Report(benchmark::State& pState, const KComparison& pComparison) const;
};

using KBench = void (*)(benchmark::State&, const KCase&);

/// Registers \p pBench for each shape and each size, as SERIES/SHAPE/SIZE.
void RegisterSeries(const char* pSeries, KBench pBench, const std::vector<KSize>& pSizes);

} // namespace qexbench

#endif
