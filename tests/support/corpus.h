#ifndef TESTS_SUPPORT_CORPUS_H
#define TESTS_SUPPORT_CORPUS_H

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// \file
/// Motions to test with: the repository's samples, and real files if ASF_CORPUS_DIR names a folder with some. World positions of their
/// bones were computed by other programs: tools/worldpositions.py for the samples, for the real files see OracleDir.

namespace qextest
{

/// A motion and its skeleton. For real files, that is the ASF file in the same folder whose name is a prefix of the motion's.
struct KCorpusPair
{
    std::string           mName; ///< Of the motion, without extension.
    std::filesystem::path mAsf;
    std::filesystem::path mAmc;
    std::filesystem::path mWorld;           ///< File with its world positions; empty when there is none.
    double                mTolerance = 0.0; ///< How far an import may be from them, as a fraction of the figure's height.
};

/// The pairs in samples/, then those in CorpusDir() and its subfolders.
std::vector<KCorpusPair> CorpusPairs();

/// Those of CorpusPairs that have world positions.
std::vector<KCorpusPair> PairsWithWorldPositions();

/// The files of samples/ and of CorpusDir(), at any depth, with the extension \p pExtension (".asf"), sorted.
std::vector<std::filesystem::path> CorpusFiles(const std::string& pExtension);

/// Centimetres per unit of length of the skeleton file \p pAsf.
double CentimetresPerUnit(const std::filesystem::path& pAsf);

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
    double          mHeight; ///< From the lowest to the highest bone start or end in this frame, in centimetres.
    KJointPositions mStarts; ///< Start of each bone, by name.
    KJointPositions mEnds;
};

/// The frames of \p pPair.mWorld, in centimetres.
std::vector<KWorldFrame> ReadWorld(const KCorpusPair& pPair);

} // namespace qextest

#endif
