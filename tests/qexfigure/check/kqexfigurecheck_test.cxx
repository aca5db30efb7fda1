#include <qexfigure/check/kqexfigurecheck.h>

#include <qexfigure/check/kqexsizehint.h>
#include <tests/qexfigure/figuresupport.h>

#include <thread>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// The messages as "error 3: text", one a line.
std::string MessagesOf(const KQexFileMessages& pMessages)
{
    std::string lText;
    for (const KQexTextMessage& lMessage : pMessages.mList)
    {
        lText += std::string(lMessage.mSeverity == KQexTextMessage::eERROR ? "error " : "warning ") + std::to_string(lMessage.mLine) +
                 ": " + lMessage.mText + "\n";
    }
    return lText;
}

KQexFigureFile Buffered(const std::string& pBytes, const std::string& pName)
{
    KQexFigureFile   lFile;
    KQexFigureReport lReport;
    EXPECT_TRUE(lFile.OpenBuffer(pBytes, pName, lReport)) << TextOf(lReport);
    return lFile;
}

/// What a check of the files finds, and what it says besides.
struct KCheckRun
{
    explicit KCheckRun(const KQexFigureFiles& pFiles, const KQexFigureCheckOptions& pOptions = {})
        : mOk(CheckFigure(pFiles, pOptions, mMessages, mReport)), mText(MessagesOf(mMessages))
    {
    }

    KQexFileMessages mMessages;
    KQexFigureReport mReport;
    bool             mOk;
    std::string      mText;
};

KQexFigureFiles Alone(const std::string& pBytes, const std::string& pName)
{
    KQexFigureFiles lFiles;
    lFiles.mFigure = Buffered(pBytes, pName);
    return lFiles;
}

KQexFigureFiles Wave(const std::string& pSkeleton, const std::string& pMotion)
{
    KQexFigureFiles lFiles = Alone(pSkeleton, "hand.asf");
    lFiles.mMotions.push_back(Buffered(pMotion, "wave.amc"));
    return lFiles;
}

TEST(FigureCheck, FilesWithoutProblems)
{
    for (const KQexFigureFiles& lFiles :
         {Alone(HandSkeleton(), "hand.asf"), Wave(HandSkeleton(), HandMotion()), Alone(LegBvh(), "leg.bvh")})
    {
        const KCheckRun lRun(lFiles);
        EXPECT_TRUE(lRun.mOk);
        EXPECT_EQ(lRun.mText, "");
        EXPECT_EQ(TextOf(lRun.mReport), "");
        EXPECT_EQ(lRun.mReport.GetStatus(), eFIGURE_OK);
    }
}

TEST(FigureCheck, WhatTheReaderAcceptsSilently)
{
    const KCheckRun lRun(Alone(Replaced(Replaced(HandSkeleton(), "length 5", "length 5 cm"), "    arm hand\n", ""), "hand.asf"));
    EXPECT_TRUE(lRun.mOk);
    EXPECT_EQ(lRun.mMessages.mWarnings, 2);
    EXPECT_EQ(lRun.mText, "warning 22: Bone is missing from the hierarchy, it stays under root (hand)\n"
                          "warning 24: Ignoring extra text on the line (cm)\n");
}

TEST(FigureCheck, ASkeletonThatIsCutShort)
{
    const std::string lText = HandSkeleton();
    const KCheckRun   lRun(Alone(lText.substr(0, lText.find("    direction 1 0 0\n    length 5")), "hand.asf"));
    EXPECT_FALSE(lRun.mOk);
    EXPECT_EQ(lRun.mText, "error 20: The file ends inside the bone hand, which begins here\n");
    EXPECT_EQ(lRun.mReport.GetStatus(), eFIGURE_INPUT);
}

TEST(FigureCheck, ValuesOutsideTheirLimits)
{
    const std::string lSkeleton = Replaced(HandSkeleton(), "dof rx ry rz\n", "dof rx ry rz\n    limits (-10 10)\n (-10 10)\n (-10 45)\n");
    const KCheckRun   lRun(Wave(lSkeleton, HandMotion()));
    EXPECT_TRUE(lRun.mOk);
    EXPECT_EQ(lRun.mText, "warning 0: Bone hand: rz is outside its limits (-10 45) in 1 frame, first in frame 5; its range is 0 to 90\n");
    KQexFigureCheckOptions lOptions;
    lOptions.mLimits = false;
    EXPECT_EQ(KCheckRun(Wave(lSkeleton, HandMotion()), lOptions).mText, "");
}

TEST(FigureCheck, AMotionIsReadOnAfterAnError)
{
    const KCheckRun lRun(
        Wave(HandSkeleton(), Replaced(Replaced(HandMotion(), "hand 0 0 90", "hand 0 x 90"), "hand 0 0 0\n5", "hand 0\n5")));
    EXPECT_FALSE(lRun.mOk);
    EXPECT_EQ(lRun.mMessages.mErrors, 2) << lRun.mText;
}

TEST(FigureCheck, AMotionOfAnotherSkeleton)
{
    const std::string lMotion = ReplacedAll(ReplacedAll(HandMotion(), "hand", "tail"), "root", "back");
    const KCheckRun   lRun(Wave(HandSkeleton(), lMotion));
    EXPECT_FALSE(lRun.mOk);
    EXPECT_EQ(lRun.mMessages.mErrors, 1);
    EXPECT_TRUE(lRun.mReport.IsMismatch());
}

TEST(FigureCheck, ABadSkeletonIsTheMotionsError)
{
    const KCheckRun lRun(Wave(":version 1.10\n:bonedata\n", HandMotion()));
    EXPECT_FALSE(lRun.mOk);
    EXPECT_EQ(lRun.mText, "error 0: The motion cannot be read without its skeleton\n");
    EXPECT_EQ(TextOf(lRun.mReport).rfind("error hand.asf:", 0), 0u) << TextOf(lRun.mReport);
}

TEST(FigureCheck, JointsAndTakesOfOtherFormats)
{
    const KCheckRun lRun(
        Alone(Replaced(Replaced(LegBvh(), "JOINT Leg", "JOINT Hips"), "0 91 0 0 0 0 90 0 0", "0 90 0 0 0 0 0 0 0"), "leg.bvh"));
    EXPECT_TRUE(lRun.mOk);
    EXPECT_NE(lRun.mText.find("warning 0: No joint moves in the take ("), std::string::npos) << lRun.mText;
}

TEST(FigureCheck, TheSizeIsANote)
{
    KQexFigureFiles        lFiles;
    KQexFigureReport       lReport;
    KQexFigureCheckOptions lOptions;
    ASSERT_TRUE(lFiles.Open({(SamplesDir() / "walker.asf").string()}, {}, lReport));
    EXPECT_EQ(TextOf(KCheckRun(lFiles).mReport), "");
    std::string     lText(ReadFile(SamplesDir() / "walker.asf"));
    const KCheckRun lRun(Alone(Replaced(lText, "length 0.45", "length 45"), "small.asf"));
    EXPECT_EQ(TextOf(lRun.mReport).rfind("note small.asf:0: measures ", 0), 0u) << TextOf(lRun.mReport);
}

// The skeleton reader's tables are shared by the process.
TEST(FigureCheck, SeveralThreadsMayCheckAndLoad)
{
    std::vector<std::thread> lThreads;
    std::vector<std::string> lTexts(8);
    for (std::string& lText : lTexts)
    {
        lThreads.emplace_back(
            [&lText]
            {
                const KQexFigureFiles lFiles = Alone(Replaced(HandSkeleton(), "length 5", "length 5 cm"), "hand.asf");
                for (int lTime = 0; lTime < 20; ++lTime)
                {
                    KQexFigure       lFigure;
                    KQexFigureReport lReport;
                    lText = lFigure.Load(lFiles, {}, lReport) ? KCheckRun(lFiles).mText : TextOf(lReport);
                }
            });
    }
    for (std::thread& lThread : lThreads)
    {
        lThread.join();
    }
    for (const std::string& lText : lTexts)
    {
        EXPECT_EQ(lText, "warning 24: Ignoring extra text on the line (cm)\n");
    }
}

TEST(FigureCheck, FiguresUnlikePeopleGetAHint)
{
    const std::string lScale = "asf convert --scale";
    for (const double lExtent : {30.0, 170.0, 350.0, 0.0})
    {
        EXPECT_EQ(SizeHint(lExtent, 20, 1, lScale), "") << lExtent;
    }
    EXPECT_EQ(SizeHint(1.7, 9, 1, lScale), "");
    const std::string lUnlike = " at rest, unlike a person: ";
    EXPECT_EQ(SizeHint(1.7, 20, 1, lScale),
              "measures 1.7 cm" + lUnlike + "the file may be in metres, then asf convert --scale 100 makes it 1.7 m");
    EXPECT_EQ(SizeHint(17, 20, 1, lScale),
              "measures 17 cm" + lUnlike + "the file may be in decimetres, then asf convert --scale 10 makes it 1.7 m");
    EXPECT_EQ(SizeHint(26, 20, 1, lScale),
              "measures 26 cm" + lUnlike +
                  "the file may be in units of 5.64 cm, as many ASF files are, then asf convert --scale 5.64444 makes it 1.47 m");
    EXPECT_EQ(SizeHint(1700, 20, 1, lScale),
              "measures 17 m" + lUnlike + "the file may be in millimetres, then asf convert --scale 0.1 makes it 1.7 m");
    EXPECT_EQ(SizeHint(17000, 20, 100, lScale),
              "measures 170 m" + lUnlike + "the file may be in centimetres, then asf convert --scale 0.01 makes it 1.7 m");
    EXPECT_EQ(SizeHint(457.2, 20, 2.54, lScale),
              "measures 4.57 m" + lUnlike + "the file may be in centimetres, then asf convert --scale 0.393701 makes it 1.8 m");
    EXPECT_EQ(SizeHint(457.2, 20, 1, lScale),
              "measures 4.57 m" + lUnlike + "its lengths may have been taken for inches, then asf convert --scale 0.393701 makes it 1.8 m");
    EXPECT_EQ(SizeHint(1e9, 20, 1, lScale), "measures 1e+07 m" + lUnlike + "asf convert --scale FACTOR corrects that");
    EXPECT_EQ(SizeHint(1.7, 20, 1, ""), "measures 1.7 cm" + lUnlike + "the file may be in metres, then scaling by 100 makes it 1.7 m");
}

} // namespace
