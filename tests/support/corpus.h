#ifndef TESTS_SUPPORT_CORPUS_H
#define TESTS_SUPPORT_CORPUS_H

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// \file
/// The real motions, and where another program says their bones are.

namespace qextest
{

/// A motion with the skeleton beside it whose name begins its own.
struct KCorpusPair
{
    std::string           mName; ///< Of the motion, without extension.
    std::filesystem::path mAsf;
    std::filesystem::path mAmc;
    std::filesystem::path mOracle; ///< Its file with world positions.
};

/// All pairs below CorpusDir(), which is not empty.
std::vector<KCorpusPair> CorpusPairs();

struct KPoint
{
    double mX;
    double mY;
    double mZ;
};

double Distance(const KPoint& pLeft, const KPoint& pRight);

/// Places of joints by name.
using KPlaces = std::map<std::string, KPoint>;

/// One frame of a file with world positions.
struct KWorldFrame
{
    long long mNumber; ///< As the motion's file numbers it.
    double    mHeight; ///< Of the figure.
    KPlaces   mStarts; ///< Of bones by name.
    KPlaces   mEnds;
};

/// The frames of \p pOracle, all lengths times \p pFactor.
std::vector<KWorldFrame> ReadWorld(const std::filesystem::path& pOracle, double pFactor);

} // namespace qextest

#endif
