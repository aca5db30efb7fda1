#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/commands/tablecommand.h>
#include <qexfigure/table/kqextabletext.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace asfapp
{

namespace
{

std::unique_ptr<qexsdk::KQexTableValues> MakePositions(const KTableOptions& pOptions, const KLoadedMotion& pMotion,
                                                       const std::vector<size_t>& pPicked, qexsdk::KQexTable& pTable)
{
    pTable.mArray = "world_positions";
    pTable.mWords = {{"unit", pOptions.mWorld.mUnits.empty() ? "cm" : pOptions.mWorld.mUnits}};
    pTable.mComponents = {"x", "y", "z"};
    pTable.mShape = {3};
    AddJointItems(pMotion, pPicked, qexsdk::DecimalsOf(pOptions.mWorld.GetFactor()), pTable);
    return std::make_unique<qexsdk::KQexPositionValues>(pMotion.GetJoints(), pPicked, pOptions.mWorld.GetSpace());
}

} // namespace

void SetUpPositions(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KTableOptions>();
    AddTableOptions(pCommand, *lOptions, true);
    AddWorldOptions(pCommand, lOptions->mWorld);
    pCommand.footer("Positions are in world space: x to the figure's left at rest, y up, z forward; in centimetres unless --units says\n"
                    "otherwise. A joint is at the start of its bone. CSV has the columns frame,time,bone,x,y,z; time is in seconds from\n"
                    "the file's first frame. With --fps, frame is the number in the file, with decimals between two frames, and\n"
                    "--frames is one range. An .npy file holds float32 of shape (frames, joints, 3); the joint names go to\n"
                    "OUT.names.txt next to it. An .npz file holds names, times and positions.\n"
                    "\n"
                    "Examples:\n"
                    "  asf positions walk.amc -o walk.csv\n"
                    "  asf positions walker.asf walk.amc --frames 1,100-200,last --wide\n"
                    "  asf positions dance.bvh -o dance.npy\n"
                    "  asf positions walk.amc --joints left_foot,right_foot --up z --units m -o feet.npz\n"
                    "  asf positions walk.amc --asf walker.asf --source-fps 30000/1001 --ends -o walk.npy");
    pCommand.callback(
        [lOptions, &pConsole]
        {
            const auto lMake = [&lOptions](const KLoadedMotion& pMotion, const std::vector<size_t>& pPicked, qexsdk::KQexTable& pTable)
            {
                return MakePositions(*lOptions, pMotion, pPicked, pTable);
            };
            RunTable(*lOptions, lMake, pConsole);
        });
}

} // namespace asfapp
