#ifndef TESTS_SUPPORT_CORPUS_H
#define TESTS_SUPPORT_CORPUS_H

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// \file
/// The real motions, and the world positions of their bones computed by another program.

namespace qextest
{

/// A motion and its skeleton: the ASF file in the same folder whose name is a prefix of the motion's.
struct KCorpusPair
{
    std::string           mName; ///< Of the motion, without extension.
    std::filesystem::path mAsf;
    std::filesystem::path mAmc;
    std::filesystem::path mOracle; ///< File with its world positions.
};

/// All pairs in CorpusDir() and its subfolders. CorpusDir() must not be an empty path.
std::vector<KCorpusPair> CorpusPairs();

struct KPoint
{
    double mX;
    double mY;
    double mZ;
};

double Distance(const KPoint& pLeft, const KPoint& pRight);

/// Joint positions by name.
using KJointPositions = std::map<std::string, KPoint>;

/// One frame of a file with world positions.
struct KWorldFrame
{
    long long       mNumber; ///< As in the motion file.
    double          mHeight; ///< From the lowest to the highest bone start or end in this frame.
    KJointPositions mStarts; ///< Start of each bone, by name.
    KJointPositions mEnds;
};

/// The frames of \p pOracle, with all lengths multiplied by \p pFactor.
std::vector<KWorldFrame> ReadWorld(const std::filesystem::path& pOracle, double pFactor);

} // namespace qextest

#endif
