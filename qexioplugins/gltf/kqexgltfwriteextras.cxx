#include <qexioplugins/gltf/kqexgltfwriteextras.h>

#include <qexscene/kqexnode.h>

namespace qexsdk
{

namespace
{

void WriteAngles(KQexGltfJsonWriter& pJson, const char* pKey, KQexVector4 pAngles)
{
    pJson.Key(pKey);
    pJson.BeginArray();
    for (int i = 0; i < 3; ++i)
    {
        pJson.Number(pAngles[i]);
    }
    pJson.EndArray();
}

/// The bounds that are active: {"x": …, "z": …}.
void WriteBounds(KQexGltfJsonWriter& pJson, const char* pKey, const bool pActive[3], KQexVector4 pBounds)
{
    static const char* const sAxes[3] = {"x", "y", "z"};
    pJson.Key(pKey);
    pJson.BeginObject();
    for (int i = 0; i < 3; ++i)
    {
        if (pActive[i])
        {
            pJson.Key(sAxes[i]);
            pJson.Number(pBounds[i]);
        }
    }
    pJson.EndObject();
}

void WriteLimits(KQexGltfJsonWriter& pJson, const char* pKey, const KQexLimits& pLimits)
{
    bool lMinActive[3];
    bool lMaxActive[3];
    pLimits.GetLimitMinActive(lMinActive[0], lMinActive[1], lMinActive[2]);
    pLimits.GetLimitMaxActive(lMaxActive[0], lMaxActive[1], lMaxActive[2]);
    pJson.Key(pKey);
    pJson.BeginObject();
    WriteBounds(pJson, "max", lMaxActive, pLimits.GetLimitMax());
    WriteBounds(pJson, "min", lMinActive, pLimits.GetLimitMin());
    pJson.EndObject();
}

void WriteNodeLimits(KQexGltfJsonWriter& pJson, const KQexNodeLimits& pLimits)
{
    pJson.Key("limits");
    pJson.BeginObject();
    if (pLimits.GetRotationLimitActive())
    {
        WriteLimits(pJson, "rotation", pLimits.mRotationLimits);
    }
    if (pLimits.GetTranslationLimitActive())
    {
        WriteLimits(pJson, "translation", pLimits.mTranslationLimits);
    }
    pJson.EndObject();
}

void WriteDofs(KQexGltfJsonWriter& pJson, const std::vector<KQexBoneDof>& pDofs)
{
    pJson.Key("dofs");
    pJson.BeginArray();
    for (const KQexBoneDof& lDof : pDofs)
    {
        pJson.BeginObject();
        pJson.Key("dof");
        pJson.Text(lDof.mWord);
        if (lDof.mHasMax)
        {
            pJson.Key("max");
            pJson.Number(lDof.mMax);
        }
        if (lDof.mHasMin)
        {
            pJson.Key("min");
            pJson.Number(lDof.mMin);
        }
        pJson.EndObject();
    }
    pJson.EndArray();
}

} // namespace

void WriteGltfExtras(KQexGltfJsonWriter& pJson, const KQexNode& pNode, const KQexBoneDofs* pBoneDofs)
{
    static const char* const sOrders[] = {"XYZ", "XZY", "YZX", "YXZ", "ZXY", "ZYX"};
    const auto               lFound = pBoneDofs != nullptr ? pBoneDofs->find(pNode.GetName()) : KQexBoneDofs::const_iterator();
    const bool               lHasDofs = pBoneDofs != nullptr && lFound != pBoneDofs->end();
    const KQexNodeLimits&    lLimits = pNode.GetLimits();
    const bool               lHasLimits = lLimits.GetTranslationLimitActive() || lLimits.GetRotationLimitActive();
    const bool               lIsActive = pNode.GetRotationActive();
    const bool               lHasOrder = lIsActive && pNode.GetRotationOrder() <= eEULER_ZYX;
    const bool               lHasPre = lIsActive && pNode.GetPreRotation().Length() > 0.0;
    const bool               lHasPost = lIsActive && pNode.GetPostRotation().Length() > 0.0;
    if (!lHasDofs && !lHasLimits && !lHasOrder && !lHasPre && !lHasPost)
    {
        return;
    }
    pJson.Key("extras");
    pJson.BeginObject();
    if (lHasDofs)
    {
        WriteDofs(pJson, lFound->second);
    }
    if (lHasLimits)
    {
        WriteNodeLimits(pJson, lLimits);
    }
    if (lHasPost)
    {
        WriteAngles(pJson, "postRotation", pNode.GetPostRotation());
    }
    if (lHasPre)
    {
        WriteAngles(pJson, "preRotation", pNode.GetPreRotation());
    }
    if (lHasOrder)
    {
        pJson.Key("rotationOrder");
        pJson.Text(sOrders[pNode.GetRotationOrder()]);
    }
    pJson.EndObject();
}

} // namespace qexsdk
