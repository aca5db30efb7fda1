#ifndef QEXSCENE_KQEXANIMCURVENODE_H
#define QEXSCENE_KQEXANIMCURVENODE_H

#include <kbaselib/kbase/ktime.h>
#include <qexscene/kqexobject.h>
#include <qexscene/kqexproperty.h>

namespace qexsdk
{

class KQexAnimCurve;
class KQexAnimLayer;

/// Drives one property of three components on one layer: a channel for each of x, y, z (0, 1, 2), with a value and curves
/// that replace it. Made by KQexProperty::GetCurveNode and owned by the scene. Destroy(true, …) also ends its curves.
class QEX_API KQexAnimCurveNode : public KQexObject
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// Number of channels.
    static constexpr unsigned int kChannelCount = 3;

    /// Makes a curve node of no property and no layer, owned by the scene of \p pContainer. Null when \p pContainer is null
    /// or memory runs out.
    static KQexAnimCurveNode* Create(KQexObject* pContainer, const char* pName);

    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;
    KQexObject*        GetSrcObject(kQexClassId pClass, int pIndex) const override;

    /// kChannelCount.
    unsigned int GetChannelsCount() const { return kChannelCount; }

    /// The property of channel \p pChannel; not valid (KQexProperty::IsValid) when there is no such channel.
    KQexProperty GetChannel(unsigned int pChannel);

    /// The data of channel \p pChannel, null when there is no such channel. For the evaluator.
    const KQexPropertyData* GetChannelData(unsigned int pChannel) const
    {
        return pChannel < kChannelCount ? mChannels[pChannel].GetData() : nullptr;
    }

    /// What channel \p pChannel has where no curve with keys drives it. False when there is no such channel.
    template <typename T>
    bool SetChannelValue(unsigned int pChannel, T pValue)
    {
        KQexProperty lChannel = GetChannel(pChannel);
        return lChannel.IsValid() && KQexSet<T>(lChannel, pValue, true);
    }

    /// The channel's value, \p pDefault when there is no such channel.
    template <typename T>
    T GetChannelValue(unsigned int pChannel, T pDefault) const
    {
        const KQexProperty lChannel(const_cast<KQexAnimCurveNode*>(this)->GetChannel(pChannel));
        T                  lValue = pDefault;
        return lChannel.Get(&lValue, QexTypeOf(lValue)) ? lValue : pDefault;
    }

    /// The \p pIndex-th curve of channel \p pChannel, or null. Curve 0 is the one that is evaluated.
    /// \param pChannel 0 to 2.
    /// \param pIndex   from 0.
    /// \param pName    null: any; else only curves of that name count.
    KQexAnimCurve* GetCurve(unsigned int pChannel, unsigned int pIndex = 0, const char* pName = nullptr) const;

    /// Number of curves on channel \p pChannel.
    int GetCurveCount(unsigned int pChannel) const;

    /// Puts \p pCurve on channel \p pChannel, after the curves that it has. The curve stays the scene's. A curve may be on
    /// several channels.
    /// \param pCurve   a curve of the same scene, or of none.
    /// \param pChannel 0 to 2.
    /// \param pInLastPosition kept for the callers that pass it; has no effect.
    /// False when there is no such channel or curve, the curve is of another scene, or memory runs out.
    bool ConnectToChannel(KQexAnimCurve* pCurve, unsigned int pChannel, bool pInLastPosition = true);

    /// Takes \p pCurve off channel \p pChannel; it goes on existing. False when it is not there.
    bool DisconnectFromChannel(KQexAnimCurve* pCurve, unsigned int pChannel);

    /// Whether any channel has a curve with keys.
    /// \param pRecurse kept for the callers that pass it; has no effect: nothing is below a curve node.
    bool IsAnimated(bool pRecurse = false) const;

    /// Channel \p pChannel (0 when there is none) at \p pTime: its curve's value, or the channel's own where there is no curve
    /// or one without keys.
    double Evaluate(unsigned int pChannel, KTime pTime) const;

    /// The layer it is a member of, or null.
    KQexAnimLayer* GetLayer() const;

protected:
    /// As KQexObject's; objects are made by Create.
    KQexAnimCurveNode(KQexScene* pScene, const char* pName);

private:
    KQexTypedProperty<double> mChannels[kChannelCount];
};

} // namespace qexsdk

#endif
