#include <qexfigure/kqexfiguresniff.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/kpath.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace qexsdk
{

namespace
{

/// Iterates over the first words of the lines, in lower case; skips empty lines.
class KFirstWords
{
public:
    explicit KFirstWords(std::string_view pText) : mText(pText) {}

    bool Next(std::string& pWord)
    {
        while (mPosition < mText.size())
        {
            const size_t lEnd = std::min(mText.find_first_of("\r\n", mPosition), mText.size());
            size_t       lWordStart = mPosition;
            while (lWordStart < lEnd && (std::strchr(" \t,()", mText[lWordStart]) != nullptr))
            {
                ++lWordStart;
            }
            mPosition = lEnd + 1;
            if (lWordStart < lEnd)
            {
                const size_t lWordEnd = mText.find_first_of(std::string_view(" \t,()\r\n\0", 8), lWordStart);
                pWord = KToLower(std::string(mText.substr(lWordStart, std::min(lWordEnd, lEnd) - lWordStart)));
                return true;
            }
        }
        return false;
    }

private:
    std::string_view mText;
    size_t           mPosition = 0;
};

constexpr const char* kSkeletonWords[] = {":version", ":name", ":units", ":documentation", ":root", ":bonedata", ":hierarchy", ":skin"};
constexpr const char* kMotionWords[] = {"#!oml:asf",           ":fully-specified", ":degrees",  ":radians",
                                        ":samples-per-second", ":frame-range",     ":asf-file", ":asf-path"};

template <size_t kCount>
bool IsOneOf(const std::string& pWord, const char* const (&pWords)[kCount])
{
    return std::find(std::begin(pWords), std::end(pWords), pWord) != std::end(pWords);
}

bool IsFrameNumber(const std::string& pWord)
{
    return !pWord.empty() && std::all_of(pWord.begin(), pWord.end(), [](unsigned char pChar) { return std::isdigit(pChar) != 0; });
}

KQexFigureFormat FormatOfExtension(const std::string& pPath)
{
    const std::string lExtension = KPathExtension(pPath);
    return lExtension == ".amc"                            ? eFIGURE_AMC
           : lExtension == ".bvh"                          ? eFIGURE_BVH
           : lExtension == ".glb" || lExtension == ".gltf" ? eFIGURE_GLTF
                                                           : eFIGURE_ASF;
}

} // namespace

bool MayHaveLongLines(std::string_view pBytes)
{
    const size_t lFirst = pBytes.find_first_not_of(" \t\r\n\xef\xbb\xbf");
    return pBytes.substr(0, 4) == "glTF" || (lFirst != std::string_view::npos && pBytes[lFirst] == '{');
}

KQexFigureSniff SniffFigureFile(const std::string& pPath, std::string_view pHead, bool pIsWhole)
{
    KQexFigureSniff lResult;
    lResult.mFormat = FormatOfExtension(pPath);

    const bool             lUtf16 = pHead.substr(0, 2) == "\xff\xfe" || pHead.substr(0, 2) == "\xfe\xff";
    const std::string_view lText = pHead.substr(0, 3) == "\xef\xbb\xbf" ? pHead.substr(3) : pHead;
    KFirstWords            lWords(lText);
    std::string            lWord;
    bool                   lHasText = false;
    bool                   lKnown = lUtf16;
    while (!lKnown && lWords.Next(lWord))
    {
        const bool lSkeleton = IsOneOf(lWord, kSkeletonWords);
        const bool lMotion = IsOneOf(lWord, kMotionWords) || (!lHasText && IsFrameNumber(lWord));
        const bool lBvh = !lHasText && lWord == "hierarchy";
        const bool lGltf = !lHasText && (lWord[0] == '{' || lText.substr(0, 4) == "glTF");
        lKnown = lSkeleton || lMotion || lBvh || lGltf;
        lResult.mFormat = lBvh ? eFIGURE_BVH : lGltf ? eFIGURE_GLTF : lMotion ? eFIGURE_AMC : lSkeleton ? eFIGURE_ASF : lResult.mFormat;
        lHasText = lHasText || lWord[0] != '#';
    }
    lResult.mIsBinary = !lKnown && pHead.find('\0') != std::string_view::npos;
    lResult.mIsEmpty = !lKnown && !lHasText && pIsWhole;
    return lResult;
}

} // namespace qexsdk
