#ifndef TESTS_QEXFIGURE_FIGURESUPPORT_H
#define TESTS_QEXFIGURE_FIGURESUPPORT_H

#include <qexfigure/kqexfigure.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qextest
{

/// Root, an arm without DOF and a hand with three; one unit is one centimetre.
inline std::string HandSkeleton()
{
    return ":version 1.10\n:name hand\n:units\n  mass 1.0\n  length 2.54\n  angle deg\n:root\n  order TX TY TZ RX RY RZ\n  axis XYZ\n"
           "  position 0 0 0\n  orientation 0 0 0\n:bonedata\n"
           "  begin\n    id 1\n    name arm\n    direction 1 0 0\n    length 10\n    axis 0 0 0 XYZ\n  end\n"
           "  begin\n    id 2\n    name hand\n    direction 1 0 0\n    length 5\n    axis 0 0 0 XYZ\n    dof rx ry rz\n  end\n"
           ":hierarchy\n  begin\n    root arm\n    arm hand\n  end\n";
}

/// Frames 4, 5 and 8 at 10 frames a second: the root moves up by one a frame, the hand turns.
inline std::string HandMotion()
{
    return ":FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 10\n4\nroot 0 0 0 0 0 0\nhand 0 0 0\n5\nroot 0 1 0 0 0 0\nhand 0 0 90\n"
           "8\nroot 0 4 0 0 0 0\nhand 0 0 0\n";
}

/// Hips and a leg with an end, two frames at 30 a second.
inline std::string LegBvh()
{
    return "HIERARCHY\nROOT Hips\n{\n OFFSET 0 90 0\n CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\n"
           " JOINT Leg\n {\n  OFFSET 0 -40 0\n  CHANNELS 3 Zrotation Xrotation Yrotation\n  End Site\n  {\n   OFFSET 0 -45 0\n  }\n }\n}\n"
           "MOTION\nFrames: 2\nFrame Time: 0.0333333\n0 90 0 0 0 0 0 0 0\n0 91 0 0 0 0 90 0 0\n";
}

/// All messages, one a line: "error path:line: text".
inline std::string TextOf(const qexsdk::KQexFigureReport& pReport)
{
    static const char* const sWords[] = {"note", "warning", "error"};
    std::string              lText;
    for (const qexsdk::KQexFigureMessage& lMessage : pReport.GetMessages())
    {
        lText += std::string(sWords[lMessage.mSeverity]) + " " + lMessage.mPath + ":" + std::to_string(lMessage.mLine) + ": " +
                 lMessage.mText + "\n";
    }
    return lText;
}

/// The joints as "name parent" with " end" for ends, one a line.
inline std::string JointsOf(const qexsdk::KQexFigure& pFigure)
{
    std::string lText;
    for (const qexsdk::KQexFigureJoint& lJoint : pFigure.GetJoints())
    {
        lText += lJoint.mName + " " + std::to_string(lJoint.mParent) + (lJoint.mIsEnd ? " end\n" : "\n");
    }
    return lText;
}

} // namespace qextest

#endif
