#include <qexioplugins/gltf/kqexgltfjsonwriter.h>
#include <qexioplugins/gltf/kqexgltfwriteextras.h>
#include <qexioplugins/gltf/kqexgltfwriter.h>

namespace qexsdk
{

namespace
{

/// Writes a model as JSON. Omits members with default values, and empty arrays, which glTF does not allow.
class KQexGltfSerializer
{
public:
    KQexGltfSerializer(const KQexGltfModel& pModel, const KQexBoneDofs* pBoneDofs, std::string& pOut, bool pIsIndented)
        : mModel(pModel), mBoneDofs(pBoneDofs), mJson(pOut, pIsIndented)
    {
    }

    void Write(const std::string& pUri, size_t pBytes)
    {
        mJson.BeginObject();
        mJson.Key("asset");
        mJson.BeginObject();
        AddText("generator", "qex");
        AddText("version", "2.0");
        mJson.EndObject();
        AddIndex("scene", 0);
        mJson.Key("scenes");
        mJson.BeginArray();
        mJson.BeginObject();
        AddIndices("nodes", mModel.mRootNodes);
        mJson.EndObject();
        mJson.EndArray();
        AddObjects("nodes", mModel.mNodes, [this](const KQexGltfModel::KNode& pNode) { AddNode(pNode); });
        AddObjects("skins", mModel.mSkins, [this](const KQexGltfModel::KSkin& pSkin) { AddSkin(pSkin); });
        AddObjects("meshes", mModel.mMeshes, [this](const KQexGltfModel::KMesh& pMesh) { AddMesh(pMesh); });
        AddObjects("materials", mModel.mMaterials, [this](const KQexGltfModel::KMaterial& pMaterial) { AddMaterial(pMaterial); });
        AddObjects("animations", mModel.mAnimations, [this](const KQexGltfModel::KAnimation& pAnimation) { AddAnimation(pAnimation); });
        AddObjects("accessors", mModel.mAccessors, [this](const KQexGltfModel::KAccessor& pAccessor) { AddAccessor(pAccessor); });
        AddObjects("bufferViews", mModel.mViews, [this](const KQexGltfModel::KView& pView) { AddView(pView); });
        mJson.Key("buffers");
        mJson.BeginArray();
        mJson.BeginObject();
        AddCount("byteLength", pBytes);
        if (!pUri.empty())
        {
            AddText("uri", pUri);
        }
        mJson.EndObject();
        mJson.EndArray();
        mJson.EndObject();
    }

private:
    void AddText(const char* pKey, const std::string& pText)
    {
        mJson.Key(pKey);
        mJson.Text(pText);
    }

    void AddCount(const char* pKey, size_t pCount)
    {
        mJson.Key(pKey);
        mJson.Count(pCount);
    }

    void AddNumber(const char* pKey, double pNumber)
    {
        mJson.Key(pKey);
        mJson.Number(pNumber);
    }

    /// Writes nothing for -1.
    void AddIndex(const char* pKey, int pIndex)
    {
        if (pIndex >= 0)
        {
            mJson.Key(pKey);
            mJson.Index(pIndex);
        }
    }

    /// Adds an array; \p pAdd writes each member.
    template <typename TMember, typename TAdd>
    void AddArray(const char* pKey, const std::vector<TMember>& pMembers, const TAdd& pAdd)
    {
        if (pMembers.empty())
        {
            return;
        }
        mJson.Key(pKey);
        mJson.BeginArray();
        for (const TMember& lMember : pMembers)
        {
            pAdd(lMember);
        }
        mJson.EndArray();
    }

    /// Adds an array of objects; \p pAdd writes the members of each.
    template <typename TMember, typename TAdd>
    void AddObjects(const char* pKey, const std::vector<TMember>& pMembers, const TAdd& pAdd)
    {
        AddArray(pKey, pMembers,
                 [&](const TMember& pMember)
                 {
                     mJson.BeginObject();
                     pAdd(pMember);
                     mJson.EndObject();
                 });
    }

    void AddIndices(const char* pKey, const std::vector<int>& pIndices)
    {
        AddArray(pKey, pIndices, [this](int pIndex) { mJson.Index(pIndex); });
    }

    void AddNumbers(const char* pKey, const std::vector<double>& pNumbers)
    {
        AddArray(pKey, pNumbers, [this](double pNumber) { mJson.Number(pNumber); });
    }

    void AddNode(const KQexGltfModel::KNode& pNode)
    {
        AddText("name", pNode.mName);
        AddIndex("mesh", pNode.mMesh);
        AddIndex("skin", pNode.mSkin);
        AddNumbers("translation", pNode.mTranslation);
        AddNumbers("rotation", pNode.mRotation);
        AddNumbers("scale", pNode.mScale);
        AddIndices("children", pNode.mChildren);
        if (pNode.mSource != nullptr)
        {
            WriteGltfExtras(mJson, *pNode.mSource, mBoneDofs);
        }
    }

    void AddSkin(const KQexGltfModel::KSkin& pSkin)
    {
        AddText("name", pSkin.mName);
        AddIndex("inverseBindMatrices", pSkin.mInverseBinds);
        AddIndex("skeleton", pSkin.mSkeleton);
        AddIndices("joints", pSkin.mJoints);
    }

    void AddMesh(const KQexGltfModel::KMesh& pMesh)
    {
        AddText("name", pMesh.mName);
        AddObjects("primitives", pMesh.mPrimitives,
                   [this](const KQexGltfModel::KPrimitive& pPrimitive)
                   {
                       mJson.Key("attributes");
                       mJson.BeginObject();
                       for (const auto& [lAttribute, lAccessor] : pPrimitive.mAttributes)
                       {
                           AddIndex(lAttribute.c_str(), lAccessor);
                       }
                       mJson.EndObject();
                       AddIndex("material", pPrimitive.mMaterial);
                       AddIndex("mode", eGLTF_TRIANGLES);
                   });
    }

    void AddMaterial(const KQexGltfModel::KMaterial& pMaterial)
    {
        AddText("name", pMaterial.mName);
        mJson.Key("pbrMetallicRoughness");
        mJson.BeginObject();
        AddNumbers("baseColorFactor", pMaterial.mColor);
        AddNumber("metallicFactor", pMaterial.mMetallic);
        AddNumber("roughnessFactor", pMaterial.mRoughness);
        mJson.EndObject();
    }

    void AddAnimation(const KQexGltfModel::KAnimation& pAnimation)
    {
        AddText("name", pAnimation.mName);
        int lSampler = 0;
        AddObjects("channels", pAnimation.mChannels,
                   [this, &lSampler](const KQexGltfModel::KChannel& pChannel)
                   {
                       AddIndex("sampler", lSampler++);
                       mJson.Key("target");
                       mJson.BeginObject();
                       AddIndex("node", pChannel.mNode);
                       AddText("path", pChannel.mPath);
                       mJson.EndObject();
                   });
        AddObjects("samplers", pAnimation.mChannels,
                   [this](const KQexGltfModel::KChannel& pChannel)
                   {
                       AddIndex("input", pChannel.mInput);
                       AddText("interpolation", "LINEAR");
                       AddIndex("output", pChannel.mOutput);
                   });
    }

    void AddAccessor(const KQexGltfModel::KAccessor& pAccessor)
    {
        AddIndex("bufferView", pAccessor.mView);
        AddIndex("componentType", pAccessor.mComponentType);
        AddCount("count", pAccessor.mCount);
        AddText("type", ElementName(pAccessor.mElement));
        AddNumbers("max", pAccessor.mMax);
        AddNumbers("min", pAccessor.mMin);
    }

    static const char* ElementName(KQexGltfElement pElement)
    {
        switch (pElement)
        {
        case eGLTF_VEC3:
            return "VEC3";
        case eGLTF_VEC4:
            return "VEC4";
        case eGLTF_MAT4:
            return "MAT4";
        default:
            return "SCALAR";
        }
    }

    void AddView(const KQexGltfModel::KView& pView)
    {
        AddIndex("buffer", 0);
        AddCount("byteOffset", pView.mOffset);
        AddCount("byteLength", pView.mLength);
        if (pView.mTarget != 0)
        {
            AddIndex("target", pView.mTarget);
        }
    }

    const KQexGltfModel& mModel;
    const KQexBoneDofs*  mBoneDofs;
    KQexGltfJsonWriter   mJson;
};

} // namespace

std::string KQexGltfWriter::GetJson(const std::string& pUri)
{
    std::string lJson;
    KQexGltfSerializer(mModel, mOptions.mBoneDofs, lJson, !pUri.empty()).Write(pUri, GetBytes().size());
    return lJson;
}

} // namespace qexsdk
