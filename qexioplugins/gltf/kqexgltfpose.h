#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFPOSE_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFPOSE_H

#include <qexscene/kqexscene.h>

namespace qexsdk
{

/// A rotation as a unit quaternion: x, y, z, w.
struct KQexQuaternion
{
    double mData[4] = {0.0, 0.0, 0.0, 1.0}; ///< x, y, z, w.

    /// The rotation by \p pDegrees about axis \p pAxis (0 to 2).
    static KQexQuaternion About(int pAxis, double pDegrees);

    /// The rotation by \p pDegrees about x, y and z, applied in the order of code \p pOrder.
    static KQexQuaternion FromEuler(const double pDegrees[3], int pOrder);

    /// The product of rotations: \p pRight is applied first.
    KQexQuaternion operator*(const KQexQuaternion& pRight) const;

    /// The inverse rotation.
    KQexQuaternion Inverse() const;
};

/// The properties of a node that a take animates.
enum KQexGltfProperty
{
    eGLTF_TRANSLATION,
    eGLTF_ROTATION,
    eGLTF_SCALING
};

/// Local transforms of one node at any time, as glTF stores them: translation, rotation and scaling. The node's
/// T(translation) T(offset) R(pre) R(rotation) R(post)^-1 S(scaling) has this form, so nothing is lost.
class KQexGltfNodePose
{
public:
    /// \p pLayer is the take's layer; null for the rest pose.
    KQexGltfNodePose(KQexNode* pNode, const KQexAnimLayer* pLayer);

    /// The translation at \p pTime in centimetres, rotation offset included.
    void GetTranslation(KTime pTime, double pResult[3]) const;
    /// The rotation at \p pTime, pre- and post-rotation included.
    void GetRotation(KTime pTime, KQexQuaternion& pResult) const;
    /// The scale factors at \p pTime.
    void GetScaling(KTime pTime, double pResult[3]) const;

    /// Whether the property has a curve in the take or a value that differs from the rest pose.
    bool IsAnimated(KQexGltfProperty pProperty) const { return mIsAnimated[pProperty]; }

private:
    /// One component: a curve or a constant.
    struct KChannel
    {
        const KQexAnimCurve* mCurve = nullptr;
        double               mValue = 0.0;

        double At(KTime pTime) const { return mCurve != nullptr ? mCurve->Evaluate(pTime) : mValue; }
    };

    void Bind(KQexGltfProperty pProperty, const KQexProperty& pFrom, const KQexAnimLayer* pLayer);

    KChannel       mChannels[3][3];
    bool           mIsAnimated[3] = {false, false, false};
    double         mOffset[3];
    KQexQuaternion mPre;
    KQexQuaternion mPostInverse;
    int            mOrder = 0;
    bool           mHasPivots = false;
};

} // namespace qexsdk

#endif
