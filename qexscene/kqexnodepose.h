#ifndef QEXSCENE_KQEXNODEPOSE_H
#define QEXSCENE_KQEXNODEPOSE_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/ktime.h>
#include <qexscene/kqexchannel.h>
#include <qexscene/kqexquaternion.h>

namespace qexsdk
{

class KQexAnimLayer;
class KQexNode;
class KQexProperty;

/// The properties of a node that a take animates.
enum KQexNodeProperty
{
    eNODE_TRANSLATION,
    eNODE_ROTATION,
    eNODE_SCALING
};

/// Local transforms of one node at any time as translation, rotation and scaling. The node's
/// T(translation) T(offset) R(pre) R(rotation) R(post)^-1 S(scaling) has this form, so nothing is lost.
class QEX_API KQexNodePose
{
public:
    /// \p pLayer is the take's layer; null for the rest pose.
    KQexNodePose(KQexNode* pNode, const KQexAnimLayer* pLayer);

    /// The translation at \p pTime in centimetres, rotation offset included.
    void GetTranslation(KTime pTime, double pResult[3]) const;
    /// The rotation at \p pTime, pre- and post-rotation included.
    void GetRotation(KTime pTime, KQexQuaternion& pResult) const;
    /// The scale factors at \p pTime.
    void GetScaling(KTime pTime, double pResult[3]) const;

    /// The nine channels: translation x, y, z, rotation about x, y, z, scaling x, y, z.
    const KQexChannel* GetChannels() const { return mChannels; }
    /// The values of all channels at \p pTime: translation x, y, z in centimetres without the rotation offset, rotation about x, y, z in
    /// degrees without pre- and post-rotation, scale factors. \p pCursor caches the position of that time among key times.
    void EvaluateChannels(KTime pTime, KQexKeyTimes::KCursor& pCursor, double pValues[9]) const;
    /// The rotation offset in centimetres, a part of the translation.
    const double* GetOffset() const { return mOffset; }
    /// The rotation of the angles \p pAngles about x, y and z (degrees), pre- and post-rotation included.
    void ComposeRotation(const double pAngles[3], KQexQuaternion& pResult) const;

    /// Whether the property has a curve in the take or a value that differs from the rest pose.
    bool IsAnimated(KQexNodeProperty pProperty) const { return mIsAnimated[pProperty]; }

private:
    void Bind(KQexNodeProperty pProperty, const KQexProperty& pFrom, const KQexAnimLayer* pLayer);

    void GetValues(KQexNodeProperty pProperty, KTime pTime, double pResult[3]) const;

    KQexChannel    mChannels[9];
    bool           mIsAnimated[3] = {false, false, false};
    double         mOffset[3];
    KQexQuaternion mPre;
    KQexQuaternion mPostInverse;
    int            mOrder = 0;
    bool           mHasPivots = false;
};

} // namespace qexsdk

#endif
