#ifndef BENCH_SKELETONSUPPORT_H
#define BENCH_SKELETONSUPPORT_H

#include <bench/benchsupport.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <memory>
#include <string>
#include <vector>

/// \file
/// What benches of skeleton files share: reading them, and series over sizes and shapes.

namespace qexbench
{

struct KSceneDestroyer
{
    void operator()(qexsdk::KQexAsfScene* pScene) const { pScene->Destroy(); }
};

/// A skeleton, destroyed with its owner.
using KSceneOwner = std::unique_ptr<qexsdk::KQexAsfScene, KSceneDestroyer>;

/// The skeleton that \p pText tells, without clean-up. A text that cannot be read ends the program.
KSceneOwner ReadText(const std::string& pText);

/// The skeleton in the file \p pPath, cleaned up if \p pRemoveDummyNodes. A file that cannot be read ends the program.
KSceneOwner ReadPath(const std::string& pPath, bool pRemoveDummyNodes);

/// A size of a series. Many small skeletons at once take the memory of a large one: how time grows beside them is the work's own
/// doing and not that of a cache which holds one skeleton of them but not the large one.
struct KSize
{
    int mBones;         ///< of each skeleton, beside its root
    int mSkeletons = 1; ///< worked on one after the other; all of them are there at once

    /// Bones of all skeletons.
    int AllBones() const { return mBones * mSkeletons; }

    /// "1000", or "100x1000" for 100 skeletons of 1,000 bones.
    std::string Name() const;
};

/// One bench of a series.
struct KCase
{
    std::string mSeries; ///< "Read"
    EShape      mShape;
    KSize       mSize;

    /// Adds ReportPieces() of \p pBeside a bone; for 100,000 bones also of_1000 and of_100x1000, the time a bone over that of the
    /// cases of 1,000 bones of the same series and shape that ran before.
    void Report(benchmark::State& pState, const KBeside& pBeside) const;
};

using KBench = void (*)(benchmark::State&, const KCase&);

/// Registers \p pBench for each shape and each size, as SERIES/SHAPE/SIZE.
void RegisterSeries(const char* pSeries, KBench pBench, const std::vector<KSize>& pSizes);

} // namespace qexbench

#endif
