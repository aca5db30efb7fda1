#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/commands/tablecommand.h>
#include <apps/asf/usage.h>
#include <qexfigure/table/kqextabletext.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace asfapp
{

namespace
{

/// The degrees of freedom of the joints pPicked, in their order.
std::vector<qexsdk::KQexDofColumn> PickDofs(const KTableOptions& pOptions, KLoadedMotion& pMotion, const std::vector<size_t>& pPicked)
{
    std::vector<std::vector<qexsdk::KQexDofColumn>> lDofsOf(pMotion.GetJoints().size());
    for (qexsdk::KQexDofColumn& lDof : qexsdk::KQexDofColumnsOf(pMotion.GetFigure(), pMotion.GetTake(), pOptions.mWorld.GetFactor()))
    {
        lDofsOf[lDof.mJoint].push_back(std::move(lDof));
    }
    std::vector<qexsdk::KQexDofColumn> lDofs;
    for (const size_t lJoint : pPicked)
    {
        std::copy(lDofsOf[lJoint].begin(), lDofsOf[lJoint].end(), std::back_inserter(lDofs));
    }
    return lDofs;
}

void AddDofItems(const KTableOptions& pOptions, const std::vector<qexsdk::KQexDofColumn>& pDofs, qexsdk::KQexTable& pTable)
{
    constexpr int kAngleDigits = 5; // Of degrees: the limit of single precision.
    for (const qexsdk::KQexDofColumn& lDof : pDofs)
    {
        qexsdk::KQexTableItem lItem;
        lItem.mName = lDof.mName;
        lItem.mBone = lDof.mTrack.mJoint;
        lItem.mDof = lDof.mDof;
        lItem.mPerUnit = lDof.mFactor;
        lItem.mUnit = !lDof.IsLength() ? "deg" : pOptions.mWorld.mUnits.empty() ? "cm" : pOptions.mWorld.mUnits;
        lItem.mDecimals = lDof.IsLength() ? qexsdk::DecimalsOf(lDof.mFactor) : kAngleDigits;
        pTable.mItems.push_back(lItem);
    }
}

std::unique_ptr<qexsdk::KQexTableValues> MakeAngles(const KTableOptions& pOptions, KLoadedMotion& pMotion,
                                                    const std::vector<size_t>& pPicked, qexsdk::KQexTable& pTable, KConsole& pConsole)
{
    std::vector<qexsdk::KQexDofColumn> lDofs = PickDofs(pOptions, pMotion, pPicked);
    pTable.mArray = "dof_angles";
    pTable.mHasDofs = true;
    pTable.mComponents = {"value"};
    AddDofItems(pOptions, lDofs, pTable);
    if (lDofs.empty())
    {
        const bool lIsAll = pOptions.mJoints.empty();
        pConsole.Message(eERROR, pTable.mMotion, 0,
                         lIsAll ? "has rotations, not degrees of freedom: asf rotations --as euler writes angles"
                                : "has no degrees of freedom at these joints");
        pConsole.Raise(lIsAll ? eEXIT_INPUT : eEXIT_USAGE);
        return nullptr;
    }
    return std::make_unique<qexsdk::KQexDofTableValues>(std::move(lDofs));
}

} // namespace

void SetUpAngles(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KTableOptions>();
    AddTableOptions(pCommand, *lOptions, false);
    pCommand.add_option("--units", lOptions->mWorld.mUnits, "Unit of length to write: cm (default), m, in, or file for that of the input")
        ->check(OneOf({"cm", "m", "in", "file"}))
        ->option_text("UNIT");
    pCommand.footer("The numbers are the file's own, turns beyond 180 degrees included: of AMC the values of each bone's degrees of\n"
                    "freedom, of BVH the channels, which have no limits. Degrees, and centimetres for translations. CSV has the columns\n"
                    "frame,time,bone,dof,value,min,max,outside: how far a value is beyond a limit, below the lower one negative; or with\n"
                    "--wide a column NAME.DOF for each. An .npy file holds float32 of shape (frames, degrees of freedom); their names go\n"
                    "to OUT.names.txt next to it. An .npz file has names and limits, too. glTF has no degrees of freedom.\n"
                    "\n"
                    "Examples:\n"
                    "  asf angles walk.amc -o walk.csv\n"
                    "  asf angles walk.amc --joints left_shin,right_shin --wide\n"
                    "  asf angles walk.amc --fps 30 -o walk.npz\n"
                    "  asf angles walk.amc | awk -F, '$8 > 0 || $8 < 0'");
    pCommand.callback(
        [lOptions, &pConsole]
        {
            const auto lMake = [&](KLoadedMotion& pMotion, const std::vector<size_t>& pPicked, qexsdk::KQexTable& pTable)
            {
                return MakeAngles(*lOptions, pMotion, pPicked, pTable, pConsole);
            };
            lOptions->mMotion.mKeepDofValues = true;
            RunTable(*lOptions, lMake, pConsole);
        });
}

} // namespace asfapp
