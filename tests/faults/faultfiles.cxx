#include <tests/faults/faultfiles.h>

#include <tests/faults/faultoperations.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace qextest
{

namespace fs = std::filesystem;

namespace
{

constexpr const char* kOutputs[] = {"a.asf", "a.amc", "a.bvh", "a.glb", "a.gltf", "a.bin", "a.npz"};

constexpr const char* kAsf =
    ":version 1.10\n:name s\n:units\n length 0.45\n angle deg\n:root\n order TX TY TZ RX RY RZ\n axis XYZ\n"
    " position 0 0 0\n orientation 0 0 0\n:bonedata\n"
    "begin\nid 1\nname thigh\ndirection 0 -1 0\nlength 8\naxis 0 0 20 XYZ\ndof rx ry rz\nlimits (-160 20)\n(-70 70)\n(-60 70)\nend\n"
    "begin\nid 2\nname shin\ndirection 0 -1 0\nlength 7\naxis 0 0 20 XYZ\ndof rx l\nlimits (-10 170)\nend\n"
    "begin\nname ball\ndirection 0 0 1\nlength 1\naxis 0 0 0 XYZ\nend\n"
    ":hierarchy\nbegin\nroot thigh\nthigh shin\nshin ball\nend\n";

/// A motion that the key reducer cannot shorten; its third frame has an unknown bone.
std::string MakeAmc(int pFrames)
{
    std::string lText = ":FULLY-SPECIFIED\n:DEGREES\n:ODD\n";
    for (int i = 1; i <= pFrames; ++i)
    {
        const auto lAngle = [i](int pPeriod)
        {
            return " " + std::to_string(i * i % pPeriod);
        };
        lText += std::to_string(i) + "\nroot 1 2 " + std::to_string(i % 100) + lAngle(31) + lAngle(29) + lAngle(27) + "\n";
        lText += i == 3 ? "stranger 1\n" : "";
        lText += "thigh" + lAngle(37) + lAngle(41) + lAngle(43) + "\nshin" + lAngle(47) + " 5\n";
    }
    return lText;
}

} // namespace

KFaultFiles::KFaultFiles(int pFrames)
{
    fs::create_directory(mFolder / "in");
    fs::create_directory(mFolder / "out");
    WriteFile(In("a.asf"), kAsf);
    WriteFile(In("a.amc"), MakeAmc(pFrames));
    ResetOutputs();
    WriteOthers();
    ResetOutputs();
}

void KFaultFiles::WriteOthers() const
{
    KStage lStage(*this);
    lStage.ImportMotion();
    for (const KFaultOperation& lOperation : FaultOperations())
    {
        const std::string lName = lOperation.mName;
        if (lName == "WriteBvh" || lName == "WriteGlb" || lName == "WriteGltf")
        {
            EXPECT_TRUE(lOperation.mRun(lStage)) << lStage.mErrors;
            std::for_each(lOperation.mOutputs.begin(), lOperation.mOutputs.end(),
                          [this](const char* pOutput) { fs::rename(Out(pOutput), In(pOutput)); });
        }
    }
}

void KFaultFiles::ResetOutputs() const
{
    fs::remove_all(OutFolder());
    fs::create_directory(OutFolder());
    for (const char* lName : kOutputs)
    {
        WriteFile(Out(lName), "old");
    }
}

std::map<std::string, std::string> KFaultFiles::GetOutputs() const
{
    std::map<std::string, std::string> lFiles;
    for (const fs::directory_entry& lEntry : fs::directory_iterator(OutFolder()))
    {
        lFiles[lEntry.path().filename().string()] = ReadFile(lEntry.path());
    }
    return lFiles;
}

void ExpectSameFiles(const std::map<std::string, std::string>& pNow, const std::map<std::string, std::string>& pExpected)
{
    for (const auto& [lName, lBytes] : pNow)
    {
        EXPECT_EQ(pExpected.count(lName), 1u) << lName << " was left behind";
    }
    for (const auto& [lName, lBytes] : pExpected)
    {
        const auto lNow = pNow.find(lName);
        EXPECT_TRUE(lNow != pNow.end() && lNow->second == lBytes) << lName << (lNow == pNow.end() ? " is gone" : " differs");
    }
}

} // namespace qextest
