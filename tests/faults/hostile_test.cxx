#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <tests/faults/failingallocator.h>
#include <tests/faults/faultstage.h>

#include <climits>

// Hostile files, each at one size and at twice that size: reading ends as expected, memory and allocations grow no faster than the file,
// and a size that a file only claims costs nothing.

using namespace qexsdk;
using namespace qextest;

namespace
{

enum EReader
{
    eASF,
    eAMC,
    eBVH,
    eGLTF
};

struct KHostileCase
{
    const char*                        mName;
    EReader                            mReader;
    size_t                             mCount; ///< Tested with this count and with twice as many.
    std::function<std::string(size_t)> mMake;
    bool                               mIsRead;  ///< Odd but valid: reading succeeds.
    const char*                        mMessage; ///< Text that the messages contain; "": any.
};

std::ostream& operator<<(std::ostream& pOut, const KHostileCase& pCase)
{
    return pOut << pCase.mName;
}

std::string Repeated(const std::string& pText, size_t pCount)
{
    std::string lText;
    lText.reserve(pText.size() * pCount);
    for (size_t i = 0; i < pCount; ++i)
    {
        lText += pText;
    }
    return lText;
}

const std::string kAsfHead = ":version 1.10\n:units\n length 1\n angle deg\n:root\n order TX TY TZ RX RY RZ\n axis XYZ\n position 0 0 0\n"
                             " orientation 0 0 0\n:bonedata\nbegin\nid 1\nname ";
const std::string kAsfTail = "\ndof rx ry rz\nend\n:hierarchy\nbegin\nend\n";

/// A skeleton with one bone of that name and length.
std::string Asf(const std::string& pName, const std::string& pLength)
{
    return kAsfHead + pName + "\ndirection 0 1 0\nlength " + pLength + "\naxis 0 0 0 XYZ" + kAsfTail;
}

/// A motion with \p pLines in its second frame.
std::string Amc(const std::string& pLines)
{
    return ":FULLY-SPECIFIED\n:DEGREES\n1\nroot 0 0 0 0 0 0\na 0 0 0\n2\n" + pLines;
}

std::string Bvh(const std::string& pName, const std::string& pOffset, const std::string& pFrames, const std::string& pValue)
{
    return "HIERARCHY\nROOT " + pName + "\n{\nOFFSET " + pOffset +
           "\nCHANNELS 1 Xrotation\nEnd Site\n{\nOFFSET 0 1 0\n}\n}\nMOTION\nFrames: " + pFrames + "\nFrame Time: 0.01\n" + pValue + "\n";
}

/// A glTF file with one node that has \p pMembers as well.
std::string Gltf(const std::string& pMembers)
{
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"name":"a")" + pMembers + "}]}";
}

class KHostileTest : public testing::TestWithParam<KHostileCase>
{
protected:
    struct KCost
    {
        size_t mSize = 0;
        long   mAllocations = 0;
        long   mPeakBytes = 0;
    };

    /// Reads \p pText as the case's format. \p pTexts receives all messages.
    static bool Read(const std::string& pText, KQexScene* pScene, std::string& pTexts)
    {
        switch (GetParam().mReader)
        {
        case eBVH:
        {
            KQexFileBvh       lFile;
            KQexBvhReadResult lResult;
            const bool        lOk = lFile.OpenReadBuffer(pText.data(), pText.size()) && lFile.Read(pScene, {}, lResult);
            AppendTexts(lFile.GetMessages(), pTexts);
            return lOk;
        }
        case eGLTF:
        {
            KQexFileGltf       lFile;
            KQexGltfReadResult lResult;
            const bool         lOk = lFile.ReadBuffer(pText.data(), pText.size(), pScene, {}, lResult);
            AppendTexts(lFile.GetMessages(), pTexts);
            return lOk;
        }
        default:
            break;
        }
        static const std::string       sAsf = Asf("a", "1");
        KQexImportAcclaimResult        lResult;
        const bool                     lIsMotion = GetParam().mReader == eAMC;
        const KQexAcclaimSource        lText = KQexAcclaimSource::Buffer(pText.data(), pText.size(), "hostile");
        const KQexAcclaimSource        lAsf = lIsMotion ? KQexAcclaimSource::Buffer(sAsf.data(), sAsf.size(), "a") : lText;
        std::vector<KQexAcclaimSource> lMotions(lIsMotion ? 1 : 0, lText);
        const bool                     lOk = KQexImporterAcclaim::Import(pScene, lAsf, lMotions, KQexImportAcclaimOptions(), lResult);
        for (const KQexImportMessage& lMessage : lResult.mMessages)
        {
            AppendTexts({lMessage.mMessage}, pTexts);
        }
        return lOk;
    }

    static void AppendTexts(const std::vector<KQexTextMessage>& pMessages, std::string& pTexts)
    {
        const KUnfailingMemory lUncounted;
        for (const KQexTextMessage& lMessage : pMessages)
        {
            pTexts += lMessage.mText + "\n";
        }
    }

    KCost Measure(KFailingAllocator& pAllocator, size_t pCount)
    {
        const std::string lText = GetParam().mMake(pCount);
        const KScenePtr   lScene = MakeScene();
        const int         lObjects = lScene->GetObjectCount();
        KCost             lCost;
        std::string       lTexts;
        lCost.mSize = lText.size();
        pAllocator.Arm(LONG_MAX, false);
        const bool lOk = Read(lText, lScene.get(), lTexts);
        lCost.mAllocations = pAllocator.Disarm();
        lCost.mPeakBytes = KFailingAllocator::GetPeakBytes();
        EXPECT_EQ(lOk, GetParam().mIsRead) << lTexts.substr(0, 300);
        EXPECT_TRUE(lOk || !lTexts.empty()) << "failed without an error";
        EXPECT_NE(lTexts.find(GetParam().mMessage), std::string::npos) << lTexts.substr(0, 300);
        EXPECT_TRUE(lOk || lScene->GetObjectCount() == lObjects);
        return lCost;
    }
};

TEST_P(KHostileTest, CostIsLinearInTheSize)
{
    KFailingAllocator lAllocator;
    Measure(lAllocator, GetParam().mCount); // Warm up: allocates what is never freed.
    const KCost lOne = Measure(lAllocator, GetParam().mCount);
    const KCost lTwo = Measure(lAllocator, 2 * GetParam().mCount);
    std::printf("%-28s %9zu bytes %8ld allocations %10ld bytes at peak | %9zu %8ld %10ld\n", GetParam().mName, lOne.mSize,
                lOne.mAllocations, lOne.mPeakBytes, lTwo.mSize, lTwo.mAllocations, lTwo.mPeakBytes);
    EXPECT_LE(lTwo.mAllocations, lOne.mAllocations * 2 + 200);
    // A growing buffer briefly holds its old and its new block.
    EXPECT_LE(lTwo.mPeakBytes, lOne.mPeakBytes * 4 + (1 << 16));
    constexpr long kFixedCost = 3 << 20; // A line, its copy and fixed overhead.
    EXPECT_LE(lTwo.mPeakBytes, kFixedCost + 64 * static_cast<long>(lTwo.mSize));
}

template <typename TMake>
KHostileCase Case(const char* pName, EReader pReader, size_t pCount, TMake pMake, bool pIsRead, const char* pMessage)
{
    return {pName, pReader, pCount, pMake, pIsRead, pMessage};
}

/// A case with the same text for every count.
KHostileCase Fixed(const char* pName, EReader pReader, const std::string& pText, bool pIsRead, const char* pMessage)
{
    return {pName, pReader, 1, [pText](size_t) { return pText; }, pIsRead, pMessage};
}

std::vector<KHostileCase> Cases()
{
    constexpr size_t kMega = 1000000;
    const auto       lNuls = [](size_t pCount)
    {
        return std::string(pCount, '\0');
    };
    std::vector<KHostileCase> lCases = {
        Case("AsfNuls", eASF, kMega, lNuls, false, ""),
        Case("AmcNuls", eAMC, kMega, lNuls, false, ""),
        Case("BvhNuls", eBVH, kMega, lNuls, false, ""),
        Case("GltfNuls", eGLTF, kMega, lNuls, false, ""),
        Case(
            "AsfLongName", eASF, kMega / 2, [](size_t pCount) { return Asf(std::string(pCount, 'n'), "1"); }, true, ""),
        Case(
            "AsfLongNumber", eASF, kMega / 2, [](size_t pCount) { return Asf("a", std::string(pCount, '9')); }, false, ""),
        Case(
            "AmcLongName", eAMC, kMega / 2, [](size_t pCount) { return Amc(std::string(pCount, 'n') + " 1\nroot 0 0 0 0 0 0\na 1 2 3\n"); },
            true, ""),
        Case(
            "AmcLongNumber", eAMC, kMega / 2, [](size_t pCount) { return Amc("root " + std::string(pCount, '1') + "\n"); }, false, ""),
        Case(
            "BvhLongName", eBVH, kMega / 2, [](size_t pCount) { return Bvh(std::string(pCount, 'n'), "0 0 0", "1", "1"); }, true, ""),
        Case(
            "BvhLongNumber", eBVH, kMega / 2, [](size_t pCount) { return Bvh("a", std::string(pCount, '1'), "1", "1"); }, false, ""),
        Case(
            "GltfLongName", eGLTF, kMega, [](size_t pCount) { return Gltf(",\"x\":1,\"name\":\"" + std::string(pCount, 'n') + '"'); }, true,
            ""),
        Case(
            "GltfLongNumber", eGLTF, kMega, [](size_t pCount) { return Gltf(",\"scale\":[" + std::string(pCount, '9') + ",1,1]"); }, false,
            ""),
        Case(
            "AmcFramesFarApart", eAMC, 2000,
            [](size_t pCount)
            {
                std::string lText = Amc("root 0 0 0 0 0 0\na 1 2 3\n");
                for (size_t i = 1; i <= pCount; ++i)
                {
                    lText += std::to_string(i * 200000) + "\nroot 0 0 0 0 0 0\na 1 2 " + std::to_string(i % 7) + "\n";
                }
                return lText + "1000000000\nroot 0 0 0 0 0 0\na 1 2 3\n";
            },
            true, ""),
        Case(
            "AmcUnknownBones", eAMC, 20000,
            [](size_t pCount)
            {
                std::string lText;
                for (size_t i = 0; i < pCount; ++i)
                {
                    lText += "bone" + std::to_string(i) + " 1 2 3\n";
                }
                return Amc(lText + "root 0 0 0 0 0 0\na 1 2 3\n");
            },
            true, ""),
        Case(
            "BvhNesting", eBVH, kMega / 10,
            [](size_t pCount)
            { return "HIERARCHY\nROOT r\n{\nOFFSET 0 0 0\nCHANNELS 0\n" + Repeated("JOINT a\n{\nOFFSET 0 1 0\nCHANNELS 0\n", pCount); },
            false, ""),
        Case(
            "BvhBraces", eBVH, kMega, [](size_t pCount) { return "HIERARCHY\nROOT r\n" + std::string(pCount, '{'); }, false, ""),
        Case(
            "GltfNestingOfArrays", eGLTF, kMega / 2, [](size_t pCount) { return std::string(pCount, '['); }, false, ""),
        Case(
            "GltfNestingOfObjects", eGLTF, kMega / 2, [](size_t pCount) { return Repeated("{\"a\":", pCount); }, false, ""),
        Case(
            "GltfNestingInExtras", eGLTF, kMega / 2,
            [](size_t pCount) { return Gltf(",\"extras\":" + std::string(pCount, '[') + std::string(pCount, ']')); }, true, ""),
        Fixed("BvhClaimsFrames", eBVH, Bvh("a", "0 0 0", "2147483648", "1"), true, "2147483648 frames declared, 1 found"),
        Fixed("BvhClaimsMoreFrames", eBVH, Bvh("a", "0 0 0", "9223372036854775807", "1"), true, "frames declared, 1 found"),
        Fixed("BvhClaimsChannels", eBVH, "HIERARCHY\nROOT r\n{\nOFFSET 0 0 0\nCHANNELS 2147483647 Xrotation\n", false, ""),
        Fixed("GltfClaimsBytes", eGLTF,
              R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":1000000000000}],"bufferViews":[{"buffer":0,)"
              R"("byteLength":1000000000000}],"accessors":[{"bufferView":0,"componentType":5126,"count":1000000000,"type":"SCALAR"}],)"
              R"("nodes":[{}],"scenes":[{"nodes":[0]}],"animations":[{"samplers":[{"input":0,"output":0}],"channels":[{"sampler":0,)"
              R"("target":{"node":0,"path":"scale"}}]}]})",
              false, ""),
        Fixed("GltfClaimsZeros", eGLTF,
              R"({"asset":{"version":"2.0"},"accessors":[{"componentType":5126,"count":1000000000,"type":"SCALAR"}],)"
              R"("nodes":[{}],"scenes":[{"nodes":[0]}],"animations":[{"samplers":[{"input":0,"output":0}],"channels":[{"sampler":0,)"
              R"("target":{"node":0,"path":"scale"}}]}]})",
              false, ""),
    };
    return lCases;
}

INSTANTIATE_TEST_SUITE_P(Files, KHostileTest, testing::ValuesIn(Cases()),
                         [](const testing::TestParamInfo<KHostileCase>& pInfo) { return std::string(pInfo.param.mName); });

struct KNumberCase
{
    const char* mWhat;
    const char* mText;
    bool        mIsNumber; ///< Valid in the text formats; JSON has its own rules.
    bool        mIsJson;   ///< Valid in JSON.
};

/// Unusual numbers in each format, in place of a valid one.
class KHostileNumberTest : public testing::TestWithParam<KNumberCase>
{
};

TEST_P(KHostileNumberTest, IsReadOrRefused)
{
    const std::string lText = GetParam().mText;
    const auto        lImport = [](const std::string& pAsf, const std::string& pAmc)
    {
        const KScenePtr         lScene = MakeScene();
        KQexImportAcclaimResult lResult;
        const bool              lOk = KQexImporterAcclaim::Import(lScene.get(), KQexAcclaimSource::Buffer(pAsf.data(), pAsf.size(), "a"),
                                                                  {KQexAcclaimSource::Buffer(pAmc.data(), pAmc.size(), "b")}, {}, lResult);
        EXPECT_TRUE(lOk || lResult.CountMessages(true) > 0);
        return lOk;
    };
    const auto lReadBvh = [](const std::string& pBvh)
    {
        const KScenePtr   lScene = MakeScene();
        KQexFileBvh       lFile;
        KQexBvhReadResult lResult;
        const bool        lOk = lFile.OpenReadBuffer(pBvh.data(), pBvh.size()) && lFile.Read(lScene.get(), {}, lResult);
        EXPECT_TRUE(lOk || lFile.GetErrorCount() > 0);
        return lOk;
    };
    const std::string lFrame = Amc("root 0 0 0 0 0 0\na 1 2 3\n");
    EXPECT_EQ(lImport(Asf("a", lText), lFrame), GetParam().mIsNumber) << "length";
    EXPECT_EQ(lImport(Asf("a", "1"), Amc("root 0 0 " + lText + " 0 0 0\na 1 2 3\n")), GetParam().mIsNumber) << "AMC value";
    EXPECT_EQ(lReadBvh(Bvh("a", "0 " + lText + " 0", "1", "1")), GetParam().mIsNumber) << "offset";
    EXPECT_EQ(lReadBvh(Bvh("a", "0 0 0", "1", lText)), GetParam().mIsNumber) << "BVH value";

    const KScenePtr    lScene = MakeScene();
    KQexFileGltf       lFile;
    KQexGltfReadResult lResult;
    const std::string  lGltf = Gltf(",\"translation\":[0," + lText + ",0]");
    EXPECT_EQ(lFile.ReadBuffer(lGltf.data(), lGltf.size(), lScene.get(), {}, lResult), GetParam().mIsJson) << "JSON";
    EXPECT_EQ(lFile.GetMessages().empty(), GetParam().mIsJson);
}

INSTANTIATE_TEST_SUITE_P(Numbers, KHostileNumberTest,
                         testing::Values(KNumberCase{"too large", "1e999", false, false}, KNumberCase{"too small", "1e-400", true, true},
                                         KNumberCase{"hexadecimal", "0x10", false, false}, KNumberCase{"not a number", "nan", false, false},
                                         KNumberCase{"infinite", "inf", false, false}, KNumberCase{"a bare sign", "-", false, false},
                                         KNumberCase{"two points", "1.2.3", false, false},
                                         KNumberCase{"an empty exponent", "1e", false, false},
                                         KNumberCase{"a semicolon", "1;5", false, false}));

} // namespace
