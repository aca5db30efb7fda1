#include <qexfigure/kqexnpzfile.h>

#include <qexfigure/kqexcrc32.h>
#include <tests/support/filefaults.h>
#include <tests/support/runprogram.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

// Archives are read by programs that know nothing of this one: python's zipfile, unzip, numpy.

using namespace qexsdk;
using namespace qextest;
namespace fs = std::filesystem;

namespace
{

/// What the script prints that finds its archive in sys.argv[1].
std::string Python(const fs::path& pArchive, const std::string& pScript)
{
    const KRunResult lResult = RunProgram(
        {QEX_TEST_PYTHON, "-c", "import numpy, sys\nz = numpy.load(sys.argv[1], allow_pickle=False)\n" + pScript, pArchive.string()});
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    return lResult.mOut;
}

void ExpectSound(const fs::path& pArchive)
{
    for (const std::vector<std::string>& lProgram :
         {std::vector<std::string>{QEX_TEST_PYTHON, "-m", "zipfile", "-t", pArchive.string()}, {"unzip", "-t", pArchive.string()}})
    {
        const KRunResult lResult = RunProgram(lProgram);
        EXPECT_EQ(lResult.mExit, 0) << lProgram.front() << lResult.mOut << lResult.mErr;
        EXPECT_EQ(lResult.mErr, "") << lProgram.front();
    }
}

/// Writes two arrays that grow side by side, between others. False after a failure.
bool WriteArchive(KOutputFile& pOut, uint64_t pMaxPlain, size_t pFrames)
{
    KQexNpzFile               lFile(pOut, pMaxPlain);
    const std::vector<double> lNumbers = {1, -2.5, 3, 1e30, 5, 6};
    lFile.AddNumbers("fps", {KQexArrayType::eFLOAT64, {}}, {29.97});
    const int lFirst = lFile.Add("first", {KQexArrayType::eFLOAT32, {pFrames, 2, 3}});
    lFile.AddTexts("names", {"hip",
                             "r\xC3\xBC"
                             "cken",
                             "\xF0\x9F\xA6\xB4", "bad\xFF", ""});
    const int lSecond = lFile.Add("second", {KQexArrayType::eINT32, {pFrames}});
    lFile.AddNumbers("flags", {KQexArrayType::eBOOL, {2}}, {0, 1});
    lFile.AddNumbers("none", {KQexArrayType::eFLOAT32, {0, 3}}, {});
    for (size_t lFrame = 0; lFrame < pFrames; ++lFrame)
    {
        const auto lNumber = static_cast<double>(lFrame) * (lFrame % 2 == 0 ? 1 : -1);
        lFile.Append(lSecond, &lNumber, 1);
        lFile.Append(lFirst, lNumbers.data(), lNumbers.size());
    }
    return lFile.Finish();
}

} // namespace

// The check value of CRC-32, and pieces of any length.
TEST(KCrc32, IsThatOfZip)
{
    const std::string lText = "123456789";
    EXPECT_EQ(KCrc32(0, lText.data(), lText.size()), 0xCBF43926U);
    for (size_t lCut = 0; lCut <= lText.size(); ++lCut)
    {
        EXPECT_EQ(KCrc32(KCrc32(0, lText.data(), lCut), lText.data() + lCut, lText.size() - lCut), 0xCBF43926U) << lCut;
    }
    EXPECT_EQ(KCrc32(0, "", 0), 0U);
}

struct KNpyStart
{
    const char*   mName;
    KQexArrayHead mHead;
    const char*   mText;
};

TEST(KQexNpy, StartsAsTheFormatSays)
{
    KQexArrayHead lText = {KQexArrayType::eTEXT, {7}};
    lText.mTextLength = 12;
    for (const KNpyStart& lCase : {
             KNpyStart{"no axis", {KQexArrayType::eFLOAT64, {}}, "{'descr': '<f8', 'fortran_order': False, 'shape': (), }"},
             KNpyStart{"one axis", {KQexArrayType::eINT32, {5}}, "{'descr': '<i4', 'fortran_order': False, 'shape': (5,), }"},
             KNpyStart{
                 "three", {KQexArrayType::eFLOAT32, {343, 31, 3}}, "{'descr': '<f4', 'fortran_order': False, 'shape': (343, 31, 3), }"},
             KNpyStart{"bool", {KQexArrayType::eBOOL, {2, 0}}, "{'descr': '|b1', 'fortran_order': False, 'shape': (2, 0), }"},
             KNpyStart{"text", lText, "{'descr': '<U12', 'fortran_order': False, 'shape': (7,), }"},
         })
    {
        const std::string lStart = KQexNpyStart(lCase.mHead);
        EXPECT_EQ(lStart.substr(0, 8), std::string("\x93NUMPY\1\0", 8)) << lCase.mName;
        EXPECT_EQ(lStart.size() % 64, 0U) << lCase.mName;
        EXPECT_EQ(static_cast<unsigned char>(lStart[8]) + 256U * static_cast<unsigned char>(lStart[9]), lStart.size() - 10) << lCase.mName;
        EXPECT_EQ(lStart.substr(10, std::string(lCase.mText).size()), lCase.mText) << lCase.mName;
        EXPECT_EQ(lStart.back(), '\n') << lCase.mName;
    }
}

TEST(KQexNpy, ItemsAreLittleEndian)
{
    const double lNumbers[] = {1.0, -2.0};
    std::string  lBytes;
    KQexAppendItems(KQexArrayType::eFLOAT32, lNumbers, 2, lBytes);
    KQexAppendItems(KQexArrayType::eFLOAT64, lNumbers, 1, lBytes);
    KQexAppendItems(KQexArrayType::eINT32, lNumbers + 1, 1, lBytes);
    KQexAppendItems(KQexArrayType::eBOOL, lNumbers, 1, lBytes);
    EXPECT_EQ(lBytes, std::string("\0\0\x80\x3F\0\0\0\xC0"
                                  "\0\0\0\0\0\0\xF0\x3F"
                                  "\xFE\xFF\xFF\xFF\1",
                                  21));
}

class KQexNpzFileTest : public testing::TestWithParam<uint64_t>
{
};

/// With every limit for 32-bit sizes, the same arrays are read.
TEST_P(KQexNpzFileTest, IsReadByOthers)
{
    KTempDir       lFolder;
    const fs::path lPath = lFolder / "a.npz";
    KOutputFile    lOut;
    ASSERT_TRUE(lOut.Open(lPath.c_str()));
    ASSERT_TRUE(WriteArchive(lOut, GetParam(), 100000)) << lOut.GetReason();
    ASSERT_TRUE(lOut.Close());
    ExpectSound(lPath);
    EXPECT_EQ(Python(lPath, "print(sorted(z))\n"
                            "for k in z: print(k, z[k].dtype.str, z[k].shape)\n"
                            "print(float(z['fps']), ascii(list(z['names'])), list(z['flags']))\n"
                            "assert (z['first'] == numpy.array([[1, -2.5, 3], [1e30, 5, 6]], 'f4')).all()\n"
                            "n = numpy.arange(100000); assert (z['second'] == numpy.where(n % 2 == 0, n, -n)).all()\n"),
              "['first', 'flags', 'fps', 'names', 'none', 'second']\n"
              "fps <f8 ()\nfirst <f4 (100000, 2, 3)\nnames <U6 (5,)\nsecond <i4 (100000,)\nflags |b1 (2,)\nnone <f4 (0, 3)\n"
              "29.97 ['hip', 'r\\xfccken', '\\U0001f9b4', 'bad\\ufffd', ''] [False, True]\n");
}

// No ZIP64; for positions alone; for sizes of the large array too; for everything.
INSTANTIATE_TEST_SUITE_P(Limits, KQexNpzFileTest, testing::Values(KQexNpzFile::kMaxPlain, 2500000, 1000000, 300, 1));

TEST(KQexNpzFile, TheSameArraysMakeTheSameBytes)
{
    std::string lOne;
    std::string lOther;
    for (std::string* lBytes : {&lOne, &lOther})
    {
        KOutputFile lOut;
        ASSERT_TRUE(lOut.OpenBuffer(lBytes) && WriteArchive(lOut, KQexNpzFile::kMaxPlain, 10) && lOut.Close());
    }
    EXPECT_GT(lOne.size(), 1000U);
    EXPECT_TRUE(lOne == lOther);
}

TEST(KQexNpzFile, WhatCannotBeFails)
{
    using KCase = bool (*)(KQexNpzFile&);
    const double lNumbers[2] = {1, 2};
    struct
    {
        const char* mName;
        int         mError;
        KCase       mRun;
    } const lCases[] = {
        {"items are missing", EINVAL,
         [](KQexNpzFile& pFile)
         {
             return pFile.Add("a", {KQexArrayType::eFLOAT32, {2}}) < 0 || pFile.Finish();
         }},
        {"too many items", EINVAL,
         [](KQexNpzFile& pFile)
         {
             return pFile.AddNumbers("a", {KQexArrayType::eFLOAT32, {1}}, {1, 2});
         }},
        {"too few items", EINVAL,
         [](KQexNpzFile& pFile)
         {
             return pFile.AddNumbers("a", {KQexArrayType::eFLOAT32, {3}}, {1, 2}) && pFile.Finish();
         }},
        {"no such array", ENOMEM,
         [](KQexNpzFile& pFile)
         {
             const double lOne = 1;
             return pFile.Append(0, &lOne, 1);
         }},
        {"beyond 64 bits", EFBIG,
         [](KQexNpzFile& pFile)
         {
             return pFile.Add("a", {KQexArrayType::eFLOAT32, {1ULL << 40, 1ULL << 40}}) >= 0;
         }},
        {"beyond any file", EFBIG,
         [](KQexNpzFile& pFile)
         {
             return pFile.Add("a", {KQexArrayType::eFLOAT32, {1ULL << 61}}) >= 0;
         }},
    };
    for (const auto& lCase : lCases)
    {
        std::string lBytes;
        KOutputFile lOut;
        ASSERT_TRUE(lOut.OpenBuffer(&lBytes));
        KQexNpzFile lFile(lOut);
        EXPECT_FALSE(lCase.mRun(lFile)) << lCase.mName;
        EXPECT_EQ(lOut.GetError(), lCase.mError) << lCase.mName;
        EXPECT_EQ(lFile.Add("b", {KQexArrayType::eFLOAT32, {1}}), -1) << lCase.mName << ": later calls fail, too";
        EXPECT_FALSE(lFile.AddNumbers("b", {KQexArrayType::eFLOAT32, {2}}, {lNumbers[0], lNumbers[1]}));
        EXPECT_FALSE(lFile.Finish()) << lCase.mName;
        EXPECT_FALSE(lOut.Close()) << lCase.mName;
    }
}

// Every write fails in turn; the old file stays.
TEST(KQexNpzFile, AFullDiskLosesNothing)
{
    int lCalls = 1;
    for (int lNumber = 1; lCalls >= lNumber - 1; ++lNumber)
    {
        KTempDir lFolder;
        WriteFile(lFolder / "a.npz", "old");
        KFileFaults lFaults;
        lFaults.Fail(KFileFaults::eWRITE, lNumber, ENOSPC);
        KOutputFile lOut;
        ASSERT_TRUE(lOut.Open((lFolder / "a.npz").c_str()));
        const bool lOk = WriteArchive(lOut, KQexNpzFile::kMaxPlain, 30000);
        lCalls = lFaults.GetCount(KFileFaults::eWRITE);
        EXPECT_EQ(lOk, lCalls < lNumber);
        EXPECT_EQ(lOut.Close(), lOk);
        EXPECT_EQ(ReadFile(lFolder / "a.npz") == "old", !lOk);
    }
    EXPECT_GT(lCalls, 10);
}
