#ifndef BENCH_MOTIONSUPPORT_H
#define BENCH_MOTIONSUPPORT_H

#include <bench/benchsupport.h>

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <filesystem>
#include <string>

/// \file
/// Motions of any length for benches, and what working on them costs at the least.

namespace qexbench
{

/// Ends the program when \p pDone is false: a bench of something that failed measures nothing.
void Demand(bool pDone);

/// A motion and its skeleton, as text.
struct KMotion
{
    std::string mName;
    std::string mAsf;
    std::string mAmc;
};

/// The first real motion, or a generated one of the same shape.
KMotion ChooseMotion();

/// A file of \p pTimes times a motion, its frames numbered on. Gone with the object.
class KLongMotion
{
public:
    KLongMotion(const KMotion& pMotion, int pTimes);
    ~KLongMotion();
    KLongMotion(const KLongMotion&) = delete;
    KLongMotion& operator=(const KLongMotion&) = delete;

    std::string Path() const { return mPath.string(); }
    size_t      Size() const { return mSize; }
    int         Frames() const { return mFrames; }

private:
    std::filesystem::path mPath;
    size_t                mSize = 0;
    int                   mFrames = 0;
};

/// Reading a file and std::from_chars over its numbers, through a buffer: what parsing could cost at the least.
void ScanFile(const std::string& pPath);

/// The motion's skeleton.
qexsdk::KQexAsfSceneOwner ReadSkeleton(const KMotion& pMotion, qexsdk::KQexImportAcclaimResult& pResult);

/// Counts rotation DOFs, and bones that have one.
void CountRotations(qexsdk::HKQexAsfNode pBone, int& pDofs, int& pBones);

/// The trigonometry that sampling cannot do without: a sine-cosine pair a rotation DOF, three arc tangents a rotating bone.
double TurnBones(int pFrames, int pDofs, int pBones);

} // namespace qexbench

#endif
