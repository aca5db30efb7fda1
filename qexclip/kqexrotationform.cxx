#include <qexclip/kqexrotationform.h>

#include <kbaselib/kmath/keulernearest.h>
#include <kbaselib/kmath/keulertable.h>
#include <kbaselib/kmath/kquaternion.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

/// The matrix, row by row, or its first two columns.
void WriteMatrix(const KQexQuaternion& pRotation, bool pColumns, double* pResult)
{
    double lImages[3][4];
    pRotation.ToAxes(lImages);
    if (pColumns)
    {
        std::copy(lImages[0], lImages[0] + 3, pResult);
        std::copy(lImages[1], lImages[1] + 3, pResult + 3);
        return;
    }
    for (int lRow = 0; lRow < 3; ++lRow)
    {
        for (int lColumn = 0; lColumn < 3; ++lColumn)
        {
            pResult[lRow * 3 + lColumn] = lImages[lColumn][lRow];
        }
    }
}

void WriteEuler(const KQexQuaternion& pRotation, int pOrder, double* pResult)
{
    double lImages[3][4];
    pRotation.ToAxes(lImages);
    KmRtoVord(pResult, lImages, pOrder);
}

} // namespace

std::string KQexEulerOrderWord(int pOrder)
{
    const int*  lAxes = KmEulerAxisRow(pOrder);
    const bool  lRepeats = pOrder > 0 && pOrder < KmEulerAxisCount && (pOrder & 1) != 0;
    std::string lWord;
    for (const int lAxis : {lAxes[0], lAxes[1], lRepeats ? lAxes[0] : lAxes[2]})
    {
        lWord += static_cast<char>('X' + lAxis);
    }
    return lWord;
}

int KQexEulerOrderOf(std::string_view pWord)
{
    int lOrder = KmEulerAxisCount - 1;
    while (lOrder >= 0 && KQexEulerOrderWord(lOrder) != pWord)
    {
        --lOrder;
    }
    return lOrder;
}

int KQexRotationSize(KQexRotationForm pForm)
{
    constexpr int kSizes[] = {4, 9, 6, 3, 3};
    return kSizes[static_cast<int>(pForm)];
}

void KQexRotationVector(const KQexQuaternion& pRotation, double pResult[3])
{
    const double lSign = pRotation.mData[3] < 0.0 ? -1.0 : 1.0;
    double       lSine = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        lSine += pRotation.mData[i] * pRotation.mData[i];
    }
    lSine = std::sqrt(lSine);
    // angle / sin(angle / 2), which tends to 2.
    const double lFactor = lSine > 1e-12 ? 2.0 * std::atan2(lSine, lSign * pRotation.mData[3]) / lSine : 2.0;
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = lSign * lFactor * pRotation.mData[i];
    }
}

KQexRotationWriter::KQexRotationWriter(KQexRotationForm pForm, int pOrder, size_t pJoints) : mForm(pForm), mOrder(pOrder)
{
    if (pForm == KQexRotationForm::eQUATERNION || pForm == KQexRotationForm::eEULER)
    {
        mLast.assign(pJoints * static_cast<size_t>(KQexRotationSize(pForm)), 0.0);
    }
    for (size_t i = 0; pForm == KQexRotationForm::eQUATERNION && i < mLast.size(); i += 4)
    {
        mLast[i] = 1.0; // The identity is nearer to the quaternion with w >= 0.
    }
}

void KQexRotationWriter::Convert(KQexQuaternion pRotation, double* pNumbers) const
{
    pRotation.Normalize();
    switch (mForm)
    {
    case KQexRotationForm::eQUATERNION:
        *pNumbers = pRotation.mData[3];
        std::copy(pRotation.mData, pRotation.mData + 3, pNumbers + 1);
        break;
    case KQexRotationForm::eMATRIX:
    case KQexRotationForm::eSIX:
        WriteMatrix(pRotation, mForm == KQexRotationForm::eSIX, pNumbers);
        break;
    case KQexRotationForm::eAXIS_ANGLE:
        KQexRotationVector(pRotation, pNumbers);
        break;
    case KQexRotationForm::eEULER:
        WriteEuler(pRotation, mOrder, pNumbers);
        break;
    }
}

void KQexRotationWriter::MakeContinuous(double* pNumbers)
{
    const size_t lSize = static_cast<size_t>(KQexRotationSize(mForm));
    for (size_t i = 0; i < mLast.size(); i += lSize)
    {
        if (mForm == KQexRotationForm::eQUATERNION)
        {
            kChooseNearer(pNumbers + i, &mLast[i]);
        }
        else
        {
            KmNearestEuler(pNumbers + i, &mLast[i], mOrder);
        }
    }
    std::copy(pNumbers, pNumbers + mLast.size(), mLast.begin());
}

} // namespace qexsdk
