#ifndef APPS_ASF_REPORT_FIGUREPAIRING_H
#define APPS_ASF_REPORT_FIGUREPAIRING_H

#include <qexscene/kqexscene.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace asfapp
{

/// The joints of a figure to be paired.
struct KPairingSide
{
    std::vector<qexsdk::KQexNode*> mNodes;           ///< In pre-order; not owned.
    const qexsdk::KQexAnimLayer*   mLayer = nullptr; ///< Layer of the take; null without motion.
    bool                           mHasOneRoot = true;
};

/// Finds the joints of two figures that correspond. In this order:
/// - the roots, when each figure has one, whatever their names: an ASF file cannot name its root. But names come first when a root has a
///   namesake below the root of the other figure;
/// - joints of the same name, of several the first with the first, and so on;
/// - joints of the same name after the last colon: not every format keeps name-space prefixes;
/// - ends: a leaf named after its parent with "_End" that does not move, and the other figure's only other leaf at that parent.
///
/// Linear in the number of joints.
class KFigurePairing
{
public:
    /// Pairs the joints of two figures. Call once per object.
    void Run(const KPairingSide& pFirst, const KPairingSide& pSecond);

    /// Indices of each joint in both figures.
    const std::vector<std::pair<int, int>>& GetPairs() const { return mPairs; }

    /// The last pair of joints that only their names after the last colon pair, and how many there are; the pair is unset for none.
    const std::pair<int, int>& GetBarePair() const { return mBarePair; }
    int                        GetBareCount() const { return mBareCount; }

    /// Indices of the joints that only the first (0) or second (1) figure has, ascending. What writers add because their format wants it
    /// does not count: ends of joints that both have, and a root above the several roots of the other figure.
    const std::vector<int>& GetOnly(int pFigure) const { return mOnly[pFigure]; }

private:
    void             Pair(int pFirst, int pSecond);
    void             PairRoots();
    bool             HasNamesakeOfRoot(int pFigure) const;
    bool             IsPaired(int pFigure, size_t pNode) const { return mPartners[pFigure][pNode] >= 0; }
    int              PairByName(const char* (*pNameOf)(const qexsdk::KQexNode&));
    void             PairEnds();
    std::vector<int> FindOnlyLeaves(int pFigure) const;
    bool             IsEnd(int pFigure, int pNode) const;
    void             CollectOnly(int pFigure);

    const KPairingSide*              mSides[2] = {nullptr, nullptr}; ///< During Run().
    std::vector<int>                 mParents[2];                    ///< Index of each node's parent, -1 for a root.
    std::vector<int>                 mPartners[2];                   ///< Index of each node's partner, -1 without one.
    std::vector<std::pair<int, int>> mPairs;
    std::pair<int, int>              mBarePair;
    int                              mBareCount = 0;
    std::vector<int>                 mOnly[2];
};

} // namespace asfapp

#endif
