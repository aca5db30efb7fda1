#ifndef APPS_ASF_REPORT_POSITIONWRITER_H
#define APPS_ASF_REPORT_POSITIONWRITER_H

#include <apps/asf/figure/point.h>
#include <kbaselib/kbase/koutputfile.h>

#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

/// Head of a table of positions.
struct KPositionTable
{
    std::string              mSkeleton; ///< Paths, for JSON.
    std::string              mMotion;
    double                   mRate = 0; ///< Frames per second.
    std::vector<std::string> mJoints;   ///< Joint names.
    size_t                   mFrameCount = 0;
    std::string              mUnit = "cm";  ///< Of the positions: "cm", "m", "in" or "file".
    int                      mDecimals = 5; ///< Digits of the positions after the point, see DecimalsOf().
};

/// Digits after the point down to the limit of single precision, for positions in \p pPerCentimetre units per centimetre.
int DecimalsOf(double pPerCentimetre);

/// Writes world positions frame by frame. Write errors are reported by closing the output.
class KPositionWriter
{
public:
    virtual ~KPositionWriter() = default;

    virtual void Begin(const KPositionTable& pTable) = 0;

    /// One position for each joint of the table, in its unit. \p pNumber is the frame's number, with decimals between two frames.
    virtual void Frame(const std::string& pNumber, double pSeconds, const std::vector<KPoint>& pPositions) = 0;

    virtual void End() = 0;
};

enum EPositionFormat
{
    eFORMAT_CSV,      ///< A row for each joint and frame: frame,time,bone,x,y,z.
    eFORMAT_CSV_WIDE, ///< A row for each frame: frame,time, then x, y and z of each joint.
    eFORMAT_JSON,
    eFORMAT_NPY ///< float32 of shape (frames, joints, 3).
};

std::unique_ptr<KPositionWriter> MakePositionWriter(EPositionFormat pFormat, qexsdk::KOutputFile& pOut);

} // namespace asfapp

#endif
