#ifndef TESTS_QEXIOPLUGINS_GLTF_GLTFBUILD_H
#define TESTS_QEXIOPLUGINS_GLTF_GLTFBUILD_H

#include <qexioplugins/gltf/kqexfilegltf.h>

#include <nlohmann/json.hpp>

#include <cstring>
#include <string>
#include <vector>

/// \file
/// Builds small glTF files like those of other programs.

namespace qextest
{

inline std::string Encode64(const std::string& pBytes)
{
    static const char* const sDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string              lText;
    for (size_t i = 0; i < pBytes.size(); i += 3)
    {
        unsigned lBits = 0;
        for (size_t j = i; j < i + 3; ++j)
        {
            lBits = lBits << 8 | (j < pBytes.size() ? static_cast<unsigned char>(pBytes[j]) : 0u);
        }
        for (size_t j = 0; j < 4; ++j)
        {
            lText += i + j <= pBytes.size() ? sDigits[lBits >> (18 - 6 * j) & 63u] : '=';
        }
    }
    return lText;
}

/// A file under construction. Tests may edit the JSON; all numbers go to buffer 0.
struct KQexGltfBuilder
{
    nlohmann::json mJson;
    std::string    mBytes;

    KQexGltfBuilder() { mJson["asset"]["version"] = "2.0"; }

    /// Adds a view of \p pValues. \return its index
    template <typename T>
    int AddView(const std::vector<T>& pValues, size_t pStride = 0)
    {
        nlohmann::json lView = {{"buffer", 0}, {"byteOffset", mBytes.size()}, {"byteLength", pValues.size() * sizeof(T)}};
        if (pStride != 0)
        {
            lView["byteStride"] = pStride;
        }
        mBytes.append(reinterpret_cast<const char*>(pValues.data()), pValues.size() * sizeof(T));
        mBytes.resize((mBytes.size() + 3) / 4 * 4);
        mJson["bufferViews"].push_back(lView);
        return static_cast<int>(mJson["bufferViews"].size()) - 1;
    }

    /// Adds an accessor. \p pView -1: none. \return its index
    int AddAccessor(int pView, int pComponentType, const char* pType, size_t pCount)
    {
        nlohmann::json lAccessor = {{"componentType", pComponentType}, {"type", pType}, {"count", pCount}};
        if (pView >= 0)
        {
            lAccessor["bufferView"] = pView;
        }
        mJson["accessors"].push_back(lAccessor);
        return static_cast<int>(mJson["accessors"].size()) - 1;
    }

    int AddFloats(const char* pType, int pComponents, const std::vector<float>& pValues)
    {
        return AddAccessor(AddView(pValues), 5126, pType, pValues.size() / static_cast<size_t>(pComponents));
    }

    /// Adds a node to the file and to its scene. \return its index
    int AddNode(const nlohmann::json& pNode)
    {
        mJson["nodes"].push_back(pNode);
        mJson["scenes"][0]["nodes"].push_back(mJson["nodes"].size() - 1);
        return static_cast<int>(mJson["nodes"].size()) - 1;
    }

    /// Adds a channel to animation 0.
    void AddChannel(int pNode, const char* pPath, int pInput, int pOutput, const char* pInterpolation)
    {
        nlohmann::json& lAnimation = mJson["animations"][0];
        nlohmann::json  lSampler = {{"input", pInput}, {"output", pOutput}};
        if (pInterpolation != nullptr)
        {
            lSampler["interpolation"] = pInterpolation;
        }
        lAnimation["channels"].push_back({{"sampler", lAnimation["samplers"].size()}, {"target", {{"node", pNode}, {"path", pPath}}}});
        lAnimation["samplers"].push_back(lSampler);
    }

    /// The file as JSON, with its buffer as a data URI.
    std::string Text() const
    {
        nlohmann::json lJson = mJson;
        if (!mBytes.empty())
        {
            lJson["buffers"] = {{{"byteLength", mBytes.size()}, {"uri", "data:application/octet-stream;base64," + Encode64(mBytes)}}};
        }
        return lJson.dump();
    }
};

/// All messages, one per line.
inline std::string MessagesOf(const qexsdk::KQexFileGltf& pFile)
{
    std::string lText;
    for (const qexsdk::KQexTextMessage& lMessage : pFile.GetMessages())
    {
        lText += lMessage.mText + "\n";
    }
    return lText;
}

} // namespace qextest

#endif
