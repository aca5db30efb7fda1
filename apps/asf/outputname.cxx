#include <apps/asf/outputname.h>

#include <kbaselib/kbase/kpath.h>

#include <algorithm>

namespace asfapp
{

namespace
{

/// An ending, the format that it stands for, and the command that writes it, if any.
struct KEnding
{
    const char* mEnding;
    const char* mFormat;
    const char* mCommand;
};

const KEnding kEndings[] = {
    {".asf", "ASF", "convert"},     {".amc", "AMC", "convert"},   {".bvh", "BVH", "convert"}, {".glb", "GLB", "convert"},
    {".gltf", "glTF", "convert"},   {".svg", "SVG", "draw"},      {".png", "PNG", "draw"},    {".csv", "CSV", "positions"},
    {".json", "JSON", "positions"}, {".npy", "NPY", "positions"}, {".npz", "NPZ", "convert"}, {".bmp", "BMP", nullptr},
    {".c3d", "C3D", nullptr},       {".dae", "COLLADA", nullptr}, {".eps", "EPS", nullptr},   {".fbx", "FBX", nullptr},
    {".gif", "GIF", nullptr},       {".jpeg", "JPEG", nullptr},   {".jpg", "JPEG", nullptr},  {".obj", "OBJ", nullptr},
    {".pdf", "PDF", nullptr},       {".tif", "TIFF", nullptr},    {".tiff", "TIFF", nullptr}, {".trc", "TRC", nullptr},
    {".usd", "USD", nullptr},       {".usda", "USD", nullptr},    {".usdc", "USD", nullptr},  {".usdz", "USD", nullptr},
    {".vrm", "VRM", nullptr},       {".webp", "WebP", nullptr},
};

/// The entry of an ending in lower case; null for an unknown one.
const KEnding* FindEnding(const std::string& pEnding)
{
    const auto* lFound =
        std::find_if(std::begin(kEndings), std::end(kEndings), [&](const KEnding& pEntry) { return pEnding == pEntry.mEnding; });
    return lFound == std::end(kEndings) ? nullptr : lFound;
}

/// "ASF", "SVG and PNG", "CSV, JSON and NPY".
std::string ListFormats(const std::vector<std::string>& pEndings)
{
    std::string lList;
    for (size_t lIndex = 0; lIndex < pEndings.size(); ++lIndex)
    {
        const KEnding* lEntry = FindEnding(pEndings[lIndex]);
        lList += lIndex == 0 ? "" : lIndex + 1 < pEndings.size() ? ", " : " and ";
        lList += lEntry != nullptr ? lEntry->mFormat : pEndings[lIndex];
    }
    return lList;
}

} // namespace

std::string WithEnding(const std::string& pPath, const std::string& pEnding)
{
    return pPath.substr(0, pPath.size() - qexsdk::KPathExtension(pPath).size()) + pEnding;
}

bool CheckOutputName(const std::string& pPath, const std::string& pWriter, const std::vector<std::string>& pEndings, KConsole& pConsole)
{
    const std::string lEnding = qexsdk::KPathExtension(pPath);
    const KEnding*    lEntry = FindEnding(lEnding);
    if (lEntry == nullptr || std::find(pEndings.begin(), pEndings.end(), lEnding) != pEndings.end())
    {
        return true;
    }
    std::string lText = "--output: " + pWriter + " writes " + ListFormats(pEndings) + ", not " + lEntry->mFormat + ": type -o " +
                        WithEnding(pPath, pEndings.front());
    if (lEntry->mCommand != nullptr && pWriter.rfind(lEntry->mCommand, 0) != 0)
    {
        lText += std::string("; asf ") + lEntry->mCommand + " writes " + lEntry->mFormat;
    }
    pConsole.Fail(eEXIT_USAGE, lText);
    return false;
}

} // namespace asfapp
