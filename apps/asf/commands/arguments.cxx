#include <apps/asf/commands/arguments.h>

#include <apps/asf/usage.h>

#include <CLI/CLI.hpp>

namespace asfapp
{

void AddRate(CLI::App& pCommand, const std::string& pText, KMotionOptions& pOptions)
{
    pOptions.mHasRate = true;
    pCommand.add_option("--fps", pOptions.mFps, pText)->option_text("RATE");
}

void AddSourceRate(CLI::App& pCommand, KMotionOptions& pOptions)
{
    pCommand
        .add_option("--source-fps,--motion-fps", pOptions.mSourceFps,
                    "Frames per second of AMC files, such as 120, 23.976 or 30000/1001 (default: the file's rate, else 120)")
        ->option_text("RATE");
}

void AddMotionOptions(CLI::App& pCommand, KMotionOptions& pOptions)
{
    pCommand.add_option("--asf", pOptions.mAsf, "Skeleton of the motion (default: searched for in the motion's folder)")
        ->option_text("FILE");
    AddSourceRate(pCommand, pOptions);
    if (FindOption(pCommand, "--fps") == nullptr)
    {
        // Not offered, but understood: it used to be the name of --source-fps.
        pCommand.add_option("--fps", pOptions.mFps)->group("");
    }
    AddAllowUnmatched(pCommand, pOptions);
    pCommand.add_flag("-q,--quiet", pOptions.mQuiet, "No notes, no progress bar");
}

void AddSearchAbove(CLI::App& pCommand, KMotionOptions& pOptions)
{
    pCommand.add_flag("--search-above", pOptions.mSearchesAbove, "Search for the skeleton in the folder above the motion's, too");
}

void AddAllowUnmatched(CLI::App& pCommand, KMotionOptions& pOptions)
{
    pCommand.add_flag("--allow-unmatched", pOptions.mAllowUnmatched,
                      "Accept a motion for a skeleton even if fewer than half of their moving joints have the same names");
}

void AddFormatOption(CLI::App& pCommand, std::string& pFormat)
{
    pCommand.add_option("--from", pFormat, "Format of the input, instead of detecting it")
        ->check(OneOf({"asf", "amc", "bvh", "glb", "gltf"}))
        ->option_text("KIND");
}

void AddWorldOptions(CLI::App& pCommand, KWorldOptions& pOptions)
{
    pCommand.add_option("--scale", pOptions.mScale, "Factor for all lengths and positions")
        ->check(NumberFrom(1e-9, 1e9))
        ->option_text("FACTOR");
    pCommand.add_option("--units", pOptions.mUnits, "Unit of length to write: cm, m, in, or file for that of the input; not to glTF")
        ->check(OneOf({"cm", "m", "in", "file"}))
        ->option_text("UNIT");
    pCommand.add_option("--up", pOptions.mUp, "Axis to write as up: y (default), z; not to glTF")
        ->check(OneOf({"y", "z"}))
        ->option_text("AXIS");
    pCommand.add_flag("--in-place", pOptions.mInPlace, "Take out the root's horizontal way; it keeps its height and turns");
}

} // namespace asfapp
