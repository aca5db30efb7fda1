#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/commands/tablecommand.h>
#include <apps/asf/usage.h>
#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kmath/keulertable.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace asfapp
{

namespace
{

using qexsdk::KQexRotationForm;
using qexsdk::KQexSpace;

struct KRotationOptions : KTableOptions
{
    std::string      mSpaceWord = "local";
    std::string      mFormWord = "quat";
    std::string      mOrderWord;
    KQexRotationForm mForm = KQexRotationForm::eQUATERNION;
    int              mOrder = 0; ///< Order code.
};

const std::vector<std::string> kForms = {"quat", "matrix", "6d", "axis-angle", "euler"}; // By KQexRotationForm.

/// "XYZ", "XYX", …, by order code.
std::vector<std::string> OrderWords()
{
    std::vector<std::string> lWords;
    for (int lOrder = 0; lOrder < qexsdk::KmEulerAxisCount; ++lOrder)
    {
        lWords.push_back(qexsdk::KQexEulerOrderWord(lOrder));
    }
    return lWords;
}

bool ParseForm(KRotationOptions& pOptions, KConsole& pConsole)
{
    pOptions.mForm = static_cast<KQexRotationForm>(std::find(kForms.begin(), kForms.end(), pOptions.mFormWord) - kForms.begin());
    if (pOptions.mOrderWord.empty())
    {
        pOptions.mOrderWord = "XYZ";
        return true;
    }
    if (pOptions.mForm != KQexRotationForm::eEULER)
    {
        pConsole.Fail(eEXIT_USAGE, "--order is for --as euler only");
        return false;
    }
    std::transform(pOptions.mOrderWord.begin(), pOptions.mOrderWord.end(), pOptions.mOrderWord.begin(),
                   [](char pChar) { return pChar >= 'a' && pChar <= 'z' ? static_cast<char>(pChar - 'a' + 'A') : pChar; });
    pOptions.mOrder = qexsdk::KQexEulerOrderOf(pOptions.mOrderWord);
    return pOptions.mOrder >= 0 || pConsole.Refuse("--order: expected " + ListWords(OrderWords()) + ", not " + pOptions.mOrderWord);
}

/// The names of a rotation's numbers.
std::vector<std::string> ComponentsOf(const KRotationOptions& pOptions)
{
    switch (pOptions.mForm)
    {
    case KQexRotationForm::eQUATERNION:
        return {"w", "x", "y", "z"};
    case KQexRotationForm::eMATRIX:
        return {"m00", "m01", "m02", "m10", "m11", "m12", "m20", "m21", "m22"};
    case KQexRotationForm::eSIX:
        return {"m00", "m10", "m20", "m01", "m11", "m21"};
    case KQexRotationForm::eAXIS_ANGLE:
        return {"x", "y", "z"};
    case KQexRotationForm::eEULER:
        break;
    }
    std::vector<std::string> lNames;
    for (const char lAxis : pOptions.mOrderWord)
    {
        const std::string lName(1, qexsdk::KToLower(lAxis));
        lNames.push_back(std::find(lNames.begin(), lNames.end(), lName) == lNames.end() ? lName : lName + "2");
    }
    return lNames;
}

std::unique_ptr<qexsdk::KQexTableValues> MakeRotations(const KRotationOptions& pOptions, const KLoadedMotion& pMotion,
                                                       const std::vector<size_t>& pPicked, qexsdk::KQexTable& pTable)
{
    // Angles in degrees have two digits more before the point than the other numbers.
    const bool lIsEuler = pOptions.mForm == KQexRotationForm::eEULER;
    pTable.mArray = pOptions.mSpaceWord + "_rotations";
    pTable.mWords = {{"space", pOptions.mSpaceWord}, {"form", pOptions.mFormWord}};
    if (lIsEuler)
    {
        pTable.mWords.emplace_back("order", pOptions.mOrderWord);
    }
    pTable.mComponents = ComponentsOf(pOptions);
    pTable.mShape =
        pOptions.mForm == KQexRotationForm::eMATRIX ? std::vector<uint64_t>{3, 3} : std::vector<uint64_t>{pTable.mComponents.size()};
    AddJointItems(pMotion, pPicked, lIsEuler ? 6 : 8, pTable);
    const KQexSpace lSpace = pOptions.mSpaceWord == "world" ? KQexSpace::eWORLD : KQexSpace::eLOCAL;
    return std::make_unique<qexsdk::KQexRotationValues>(pMotion.GetJoints(), pPicked, pOptions.mWorld.GetSpace(), lSpace, pOptions.mForm,
                                                        pOptions.mOrder);
}

void RunRotations(KRotationOptions& pOptions, KConsole& pConsole)
{
    if (ParseForm(pOptions, pConsole))
    {
        const auto lMake = [&pOptions](const KLoadedMotion& pMotion, const std::vector<size_t>& pPicked, qexsdk::KQexTable& pTable)
        {
            return MakeRotations(pOptions, pMotion, pPicked, pTable);
        };
        RunTable(pOptions, lMake, pConsole);
    }
}

void AddFormOptions(CLI::App& pCommand, KRotationOptions& pOptions)
{
    pCommand.add_option("--space", pOptions.mSpaceWord, "What rotations are relative to: local (the parent; default), world")
        ->check(OneOf({"local", "world"}))
        ->option_text("SPACE");
    pCommand.add_option("--as", pOptions.mFormWord, "Numbers to write: quat (w,x,y,z; default), matrix, 6d, axis-angle, euler")
        ->check(OneOf(kForms))
        ->option_text("FORM");
    pCommand.add_option("--order", pOptions.mOrderWord, "Order of Euler angles: XYZ (default) turns about x first; or any other, XYX too")
        ->option_text("ORDER");
    pCommand.add_option("--up", pOptions.mWorld.mUp, "Axis to write as up: y (default), z")->check(OneOf({"y", "z"}))->option_text("AXIS");
}

} // namespace

void SetUpRotations(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KRotationOptions>();
    AddTableOptions(pCommand, *lOptions, true);
    AddFormOptions(pCommand, *lOptions);
    pCommand.footer("A rotation turns the joint's axes into its parent's, or with --space world into the world's; those of roots are the\n"
                    "same in both. Scaling is left out. Quaternions are w,x,y,z and do not change sign from frame to frame; matrices\n"
                    "turn column vectors and are written row by row; 6d is a matrix's first two columns; axis-angle is the axis times\n"
                    "the angle in radians; Euler angles are degrees, continuous, about the fixed axes of the parent in the order of\n"
                    "--order, first to last. With --up z the joints' axes are turned as the world's are. An .npy file holds float32 of\n"
                    "shape (frames, joints, numbers), for matrices (frames, joints, 3, 3).\n"
                    "\n"
                    "Examples:\n"
                    "  asf rotations walk.amc -o walk.csv\n"
                    "  asf rotations dance.bvh --space world --as matrix -o dance.npy\n"
                    "  asf rotations walk.amc --as euler --order ZXY --joints left_shin,right_shin --wide\n"
                    "  asf rotations walk.glb --as 6d --fps 30 -o walk.npz");
    pCommand.callback([lOptions, &pConsole] { RunRotations(*lOptions, pConsole); });
}

} // namespace asfapp
