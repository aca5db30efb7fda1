#ifndef QEXCLIP_KQEXROTATIONFORM_H
#define QEXCLIP_KQEXROTATIONFORM_H

#include <qexscene/kqexquaternion.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// \file
/// Rotations as numbers.

namespace qexsdk
{

/// How a rotation is written as numbers.
enum class KQexRotationForm
{
    eQUATERNION, ///< Four: w, x, y, z; of q and -q the one nearer to the frame before, in the first frame the one with w ≥ 0.
    eMATRIX,     ///< Nine, row by row: the matrix that turns column vectors, its columns the images of the axes.
    eSIX,        ///< Six: the first two columns of the matrix, the first one first.
    eAXIS_ANGLE, ///< Three: the axis times the angle in radians, 0 to π.
    eEULER       ///< Three: degrees about the axes of an order; continuous from frame to frame, so angles may exceed 180.
};

/// The axes of order code \p pOrder (see keulertable.h) in the order in which they are applied: "XYZ", "ZXZ". "XYZ" for another integer.
/// May throw std::bad_alloc.
QEX_API std::string KQexEulerOrderWord(int pOrder);

/// The order code of \p pWord, three capital letters as KQexEulerOrderWord() gives them; -1 if there is none.
QEX_API int KQexEulerOrderOf(std::string_view pWord);

/// How many numbers a rotation has in \p pForm.
QEX_API int KQexRotationSize(KQexRotationForm pForm);

/// The axis of a unit quaternion times its angle in radians, 0 to π.
QEX_API void KQexRotationVector(const KQexQuaternion& pRotation, double pResult[3]);

/// Writes the rotations of joints as numbers, and keeps them continuous from frame to frame. Double precision.
class QEX_API KQexRotationWriter
{
public:
    /// \p pOrder is the order code of Euler angles (see keulertable.h); other forms do not use it. May throw std::bad_alloc.
    KQexRotationWriter(KQexRotationForm pForm, int pOrder, size_t pJoints);

    /// The numbers of a rotation, KQexRotationSize() of them; Euler angles in order of application. Any number of threads may call it at
    /// once.
    void Convert(KQexQuaternion pRotation, double* pNumbers) const;

    /// Replaces the numbers of all joints, as Convert() made them, by those of the same rotations that follow on the frame before: the
    /// nearer one of q and -q, the nearest Euler angles. Called once for each frame, in order.
    void MakeContinuous(double* pNumbers);

private:
    KQexRotationForm    mForm;
    int                 mOrder;
    std::vector<double> mLast; ///< The numbers of the frame before, for forms with a choice; else empty.
};

} // namespace qexsdk

#endif
