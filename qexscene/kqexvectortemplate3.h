#ifndef QEXSCENE_KQEXVECTORTEMPLATE3_H
#define QEXSCENE_KQEXVECTORTEMPLATE3_H

namespace qexsdk
{

/// Three numbers x, y, z: the value of a vector property. Zero by default.
template <typename T>
class qexVectorTemplate3
{
public:
    /// x, y, z.
    T mData[3] = {T(), T(), T()};

    constexpr qexVectorTemplate3() = default;
    /// (\p pX, \p pY, \p pZ).
    constexpr qexVectorTemplate3(T pX, T pY, T pZ) : mData{pX, pY, pZ} {}

    /// Component \p pIndex, 0 to 2.
    constexpr T& operator[](int pIndex) { return mData[pIndex]; }
    /// Component \p pIndex, 0 to 2.
    constexpr const T& operator[](int pIndex) const { return mData[pIndex]; }

    /// Exact comparison, component by component.
    constexpr bool operator==(const qexVectorTemplate3& pOther) const
    {
        return mData[0] == pOther.mData[0] && mData[1] == pOther.mData[1] && mData[2] == pOther.mData[2];
    }
    /// Not operator==.
    constexpr bool operator!=(const qexVectorTemplate3& pOther) const { return !(*this == pOther); }
};

} // namespace qexsdk

#endif
