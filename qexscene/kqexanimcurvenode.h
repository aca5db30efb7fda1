#ifndef QEXSCENE_KQEXANIMCURVENODE_H
#define QEXSCENE_KQEXANIMCURVENODE_H

#include <kbaselib/kbase/ktime.h>
#include <qexscene/kqexobject.h>
#include <qexscene/kqexproperty.h>

namespace qexsdk
{

class KQexAnimCurve;
class KQexAnimLayer;

/// Drives one three-component property on one layer: a channel each for x, y, z (0, 1, 2), with a value and curves that override
/// it. Created by KQexProperty::GetCurveNode and owned by the scene. Destroy(true, …) also destroys its curves.
class QEX_API KQexAnimCurveNode : public KQexObject
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    static constexpr unsigned int kChannelCount = 3; ///< Channels: x, y, z.

    /// A curve node without a property or layer, owned by the scene of \p pContainer. Null when \p pContainer is null or memory
    /// runs out.
    static KQexAnimCurveNode* Create(KQexObject* pContainer, const char* pName);

    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;
    KQexObject*        GetSrcObject(kQexClassId pClass, int pIndex) const override;

    /// Number of channels.
    unsigned int GetChannelsCount() const { return kChannelCount; }

    /// The property of channel \p pChannel; not valid (KQexProperty::IsValid) when there is no such channel.
    KQexProperty GetChannel(unsigned int pChannel);

    /// The data of channel \p pChannel, null when there is no such channel. For the evaluator.
    const KQexPropertyData* GetChannelData(unsigned int pChannel) const
    {
        return pChannel < kChannelCount ? mChannels[pChannel].GetData() : nullptr;
    }

    /// Sets the value of channel \p pChannel, which applies while no curve with keys drives it. False when there is no such channel.
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
    /// \param pName    null: any; else only curves of that name are counted.
    KQexAnimCurve* GetCurve(unsigned int pChannel, unsigned int pIndex = 0, const char* pName = nullptr) const;

    /// Number of curves on channel \p pChannel.
    int GetCurveCount(unsigned int pChannel) const;

    /// Connects \p pCurve to channel \p pChannel, after its other curves. The scene still owns the curve. A curve may be connected
    /// to several channels.
    /// \param pCurve   a curve of the same scene, or of none.
    /// \param pChannel 0 to 2.
    /// \param pInLastPosition ignored; for compatibility.
    /// \return false when there is no such channel or \p pCurve is null or of another scene, or when memory runs out.
    bool ConnectToChannel(KQexAnimCurve* pCurve, unsigned int pChannel, bool pInLastPosition = true);

    /// Disconnects \p pCurve from channel \p pChannel without destroying it. False when it is not connected to it.
    bool DisconnectFromChannel(KQexAnimCurve* pCurve, unsigned int pChannel);

    /// Whether any channel has a curve with keys.
    /// \param pRecurse ignored; for compatibility.
    bool IsAnimated(bool pRecurse = false) const;

    /// Value of channel \p pChannel at \p pTime: its first curve's, or the channel's own if there is no curve or it has no keys.
    /// 0 when there is no such channel.
    double Evaluate(unsigned int pChannel, KTime pTime) const;

    /// The layer of which it is a member, or null.
    KQexAnimLayer* GetLayer() const;

protected:
    /// See KQexObject; use Create.
    KQexAnimCurveNode(KQexScene* pScene, const char* pName);

private:
    KQexTypedProperty<double> mChannels[kChannelCount];
};

} // namespace qexsdk

#endif
