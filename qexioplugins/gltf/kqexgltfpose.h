#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFPOSE_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFPOSE_H

#include <qexscene/kqexscene.h>

namespace qexsdk
{

/// A rotation as a unit quaternion: x, y, z, w.
struct KQexQuaternion
{
    double mData[4] = {0.0, 0.0, 0.0, 1.0}; ///< x, y, z, w.

    /// Half the turn \p pDegrees about axis \p pAxis (0 to 2).
    static KQexQuaternion About(int pAxis, double pDegrees);

    /// The rotation that applies \p pDegrees about x, y and z in order code \p pOrder's order of application.
    static KQexQuaternion FromEuler(const double pDegrees[3], int pOrder);

    /// The product of rotations: \p pRight is applied first.
    KQexQuaternion operator*(const KQexQuaternion& pRight) const;

    /// The rotation back.
    KQexQuaternion Inverse() const;
};

/// Local transforms of one node at any time, in the form that glTF has: a translation, a rotation and a scaling. The node's
/// T(translation) T(offset) R(pre) R(rotation) R(post)^-1 S(scaling) is of that form already, so nothing is lost.
class KQexGltfNodePose
{
public:
    /// \p pLayer: the take's; null: the rest pose.
    KQexGltfNodePose(KQexNode* pNode, const KQexAnimLayer* pLayer);

    /// The translation at \p pTime in centimetres, the node's offset included.
    void GetTranslation(KTime pTime, double pResult[3]) const;
    /// The rotation at \p pTime, pre- and post-rotation included.
    void GetRotation(KTime pTime, KQexQuaternion& pResult) const;
    /// The factors at \p pTime.
    void GetScaling(KTime pTime, double pResult[3]) const;

    /// Whether a curve drives the translation, the rotation or the scaling (0, 1, 2), or the take holds another value than the rest pose.
    bool IsDriven(int pProperty) const { return mIsDriven[pProperty]; }

private:
    /// One component: a curve, or a value.
    struct KChannel
    {
        const KQexAnimCurve* mCurve = nullptr;
        double               mValue = 0.0;

        double At(KTime pTime) const { return mCurve != nullptr ? mCurve->Evaluate(pTime) : mValue; }
    };

    void Bind(int pProperty, const KQexProperty& pFrom, const KQexAnimLayer* pLayer);

    KChannel       mChannels[3][3];
    bool           mIsDriven[3] = {false, false, false};
    double         mOffset[3];
    KQexQuaternion mPre;
    KQexQuaternion mPostInverse;
    int            mOrder = 0;
    bool           mHasPivots = false;
};

} // namespace qexsdk

#endif
