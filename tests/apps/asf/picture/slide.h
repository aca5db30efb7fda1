#ifndef TESTS_APPS_ASF_PICTURE_SLIDE_H
#define TESTS_APPS_ASF_PICTURE_SLIDE_H

#include <tests/apps/asf/runasf.h>

#include <string>
#include <vector>

namespace qextest
{

/// Runs asf draw, with \p pArguments, on a figure of one bone, 14 units long, whose root is at y = pStep * frame in frames 1 to
/// \p pFrames. \p pFolder gets slide.asf, slide.amc, and what is drawn.
inline KRunResult DrawSlide(const KTempDir& pFolder, int pFrames, double pStep, std::vector<std::string> pArguments)
{
    std::string lMotion = ":FULLY-SPECIFIED\n:DEGREES\n";
    for (int lFrame = 1; lFrame <= pFrames; ++lFrame)
    {
        lMotion += std::to_string(lFrame) + "\nroot 0 " + std::to_string(lFrame * pStep) + " 0 0 0 0\n";
    }
    WriteFile(pFolder / "slide.asf", ":root\n order TX TY TZ RX RY RZ\n:bonedata\n begin\n name leg\n direction 0 -1 0\n length 14\n"
                                     " end\n:hierarchy\n begin\n root leg\n end\n");
    WriteFile(pFolder / "slide.amc", lMotion);
    KRunOptions lOptions;
    lOptions.mFolder = pFolder.Path().string();
    pArguments.insert(pArguments.begin(), {"draw", "slide.asf", "slide.amc", "--source-fps", "60"});
    return RunAsf(pArguments, lOptions);
}

} // namespace qextest

#endif
