#include <qexioplugins/gltf/kqexgltfjsonwriter.h>
#include <qexioplugins/gltf/kqexgltfwriter.h>

namespace qexsdk
{

namespace
{

/// The whole file's JSON. Members that have their default, and arrays without members, which the format does not allow, are left out.
class KGltfText
{
public:
    KGltfText(const tinygltf::Model& pModel, std::string& pOut, bool pIsIndented) : mModel(pModel), mJson(pOut, pIsIndented) {}

    void Write(const std::string& pUri, size_t pBytes)
    {
        mJson.BeginObject();
        mJson.Key("asset");
        mJson.BeginObject();
        AddText("generator", mModel.asset.generator);
        AddText("version", mModel.asset.version);
        mJson.EndObject();
        AddIndex("scene", mModel.defaultScene);
        AddObjects("scenes", mModel.scenes, [this](const tinygltf::Scene& pScene) { AddIndices("nodes", pScene.nodes); });
        AddObjects("nodes", mModel.nodes, [this](const tinygltf::Node& pNode) { AddNode(pNode); });
        AddObjects("skins", mModel.skins, [this](const tinygltf::Skin& pSkin) { AddSkin(pSkin); });
        AddObjects("meshes", mModel.meshes, [this](const tinygltf::Mesh& pMesh) { AddMesh(pMesh); });
        AddObjects("materials", mModel.materials, [this](const tinygltf::Material& pMaterial) { AddMaterial(pMaterial); });
        AddObjects("animations", mModel.animations, [this](const tinygltf::Animation& pAnimation) { AddAnimation(pAnimation); });
        AddObjects("accessors", mModel.accessors, [this](const tinygltf::Accessor& pAccessor) { AddAccessor(pAccessor); });
        AddObjects("bufferViews", mModel.bufferViews, [this](const tinygltf::BufferView& pView) { AddView(pView); });
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

    /// -1 stands for none.
    void AddIndex(const char* pKey, int pIndex)
    {
        if (pIndex >= 0)
        {
            mJson.Key(pKey);
            mJson.Index(pIndex);
        }
    }

    /// An array whose members \p pAdd writes one by one.
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

    /// The same for objects whose members \p pAdd writes.
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

    void AddNode(const tinygltf::Node& pNode)
    {
        AddText("name", pNode.name);
        AddIndex("mesh", pNode.mesh);
        AddIndex("skin", pNode.skin);
        AddNumbers("translation", pNode.translation);
        AddNumbers("rotation", pNode.rotation);
        AddNumbers("scale", pNode.scale);
        AddIndices("children", pNode.children);
        if (pNode.extras.IsObject())
        {
            mJson.Key("extras");
            AddValue(pNode.extras);
        }
    }

    /// Not deep: what the writer puts into a node's extras.
    void AddValue(const tinygltf::Value& pValue)
    {
        if (pValue.IsObject())
        {
            mJson.BeginObject();
            for (const auto& [lKey, lMember] : pValue.Get<tinygltf::Value::Object>())
            {
                // A value that was not set stands for none.
                if (lMember.Type() != tinygltf::NULL_TYPE)
                {
                    mJson.Key(lKey);
                    AddValue(lMember);
                }
            }
            mJson.EndObject();
        }
        else if (pValue.IsArray())
        {
            mJson.BeginArray();
            for (const tinygltf::Value& lMember : pValue.Get<tinygltf::Value::Array>())
            {
                AddValue(lMember);
            }
            mJson.EndArray();
        }
        else if (pValue.IsString())
        {
            mJson.Text(pValue.Get<std::string>());
        }
        else
        {
            mJson.Number(pValue.GetNumberAsDouble());
        }
    }

    void AddSkin(const tinygltf::Skin& pSkin)
    {
        AddText("name", pSkin.name);
        AddIndex("inverseBindMatrices", pSkin.inverseBindMatrices);
        AddIndex("skeleton", pSkin.skeleton);
        AddIndices("joints", pSkin.joints);
    }

    void AddMesh(const tinygltf::Mesh& pMesh)
    {
        AddText("name", pMesh.name);
        AddObjects("primitives", pMesh.primitives,
                   [this](const tinygltf::Primitive& pPrimitive)
                   {
                       mJson.Key("attributes");
                       mJson.BeginObject();
                       for (const auto& [lWord, lAccessor] : pPrimitive.attributes)
                       {
                           AddIndex(lWord.c_str(), lAccessor);
                       }
                       mJson.EndObject();
                       AddIndex("material", pPrimitive.material);
                       AddIndex("mode", pPrimitive.mode);
                   });
    }

    void AddMaterial(const tinygltf::Material& pMaterial)
    {
        AddText("name", pMaterial.name);
        mJson.Key("pbrMetallicRoughness");
        mJson.BeginObject();
        AddNumbers("baseColorFactor", pMaterial.pbrMetallicRoughness.baseColorFactor);
        AddNumber("metallicFactor", pMaterial.pbrMetallicRoughness.metallicFactor);
        AddNumber("roughnessFactor", pMaterial.pbrMetallicRoughness.roughnessFactor);
        mJson.EndObject();
    }

    void AddAnimation(const tinygltf::Animation& pAnimation)
    {
        AddText("name", pAnimation.name);
        AddObjects("channels", pAnimation.channels,
                   [this](const tinygltf::AnimationChannel& pChannel)
                   {
                       AddIndex("sampler", pChannel.sampler);
                       mJson.Key("target");
                       mJson.BeginObject();
                       AddIndex("node", pChannel.target_node);
                       AddText("path", pChannel.target_path);
                       mJson.EndObject();
                   });
        AddObjects("samplers", pAnimation.samplers,
                   [this](const tinygltf::AnimationSampler& pSampler)
                   {
                       AddIndex("input", pSampler.input);
                       AddText("interpolation", pSampler.interpolation);
                       AddIndex("output", pSampler.output);
                   });
    }

    void AddAccessor(const tinygltf::Accessor& pAccessor)
    {
        AddIndex("bufferView", pAccessor.bufferView);
        AddIndex("componentType", pAccessor.componentType);
        AddCount("count", pAccessor.count);
        AddText("type", TypeName(pAccessor.type));
        AddNumbers("max", pAccessor.maxValues);
        AddNumbers("min", pAccessor.minValues);
    }

    /// Of those that the writer uses.
    static const char* TypeName(int pType)
    {
        switch (pType)
        {
        case TINYGLTF_TYPE_VEC3:
            return "VEC3";
        case TINYGLTF_TYPE_VEC4:
            return "VEC4";
        case TINYGLTF_TYPE_MAT4:
            return "MAT4";
        default:
            return "SCALAR";
        }
    }

    void AddView(const tinygltf::BufferView& pView)
    {
        AddIndex("buffer", pView.buffer);
        AddCount("byteOffset", pView.byteOffset);
        AddCount("byteLength", pView.byteLength);
        if (pView.target != 0)
        {
            AddIndex("target", pView.target);
        }
    }

    const tinygltf::Model& mModel;
    KGltfJsonWriter        mJson;
};

} // namespace

std::string KGltfWriter::GetJson(const std::string& pUri)
{
    std::string lJson;
    KGltfText(mModel, lJson, !pUri.empty()).Write(pUri, GetBytes().size());
    return lJson;
}

} // namespace qexsdk
