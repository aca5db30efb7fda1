#include <apps/asf/asfprogram.h>

#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/console.h>
#include <apps/asf/outputs.h>
#include <apps/asf/usage.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace asfapp
{

namespace
{

const char* const kDescription =
    "Inspects, checks, draws, converts, edits and compares Acclaim skeletons and motion (ASF, AMC), BVH and glTF.";

const char* const kExamples =
    "Examples:\n"
    "  asf info samples/walker.asf\n"
    "  asf check *.asf *.amc\n"
    "  asf draw samples/walker.asf -o walker.svg\n"
    "  asf COMMAND --help\n"
    "\n"
    "Data goes to standard output, messages to standard error. \"-\" is standard input or output.\n"
    "Exit status: 0 success, perhaps with warnings; 1 bad input, or differences; 2 usage error; 3 a file could not be\n"
    "opened, read or written.";

class KFormatter : public CLI::Formatter
{
public:
    // Keeps the line breaks of the examples: the base class would reflow them.
    std::string make_footer(const CLI::App* pApp) const override
    {
        const std::string lFooter = pApp->get_footer();
        return lFooter.empty() ? std::string() : lFooter + "\n";
    }

    // FILE, FILE [FILE] or FILE...
    std::string make_option_usage(const CLI::Option* pOption) const override
    {
        const std::string lName = make_option_name(pOption, true);
        const int         lMax = pOption->get_expected_max();
        return lMax <= 1 ? lName : lMax < CLI::detail::expected_max_vector_size ? lName + " [" + lName + "]" : lName + "...";
    }
};

struct KCommand
{
    const char* mName;
    const char* mDescription;
    void (*mSetUp)(CLI::App& pCommand, KConsole& pConsole);
};

/// In the order of the help.
const KCommand kCommands[] = {
    {"info", "Show what skeletons, motions and figures contain", SetUpInfo},
    {"check", "Report problems in skeletons, motions and figures", SetUpCheck},
    {"draw", "Draw a skeleton at rest, or poses or angles of a motion, as an SVG or PNG picture", SetUpDraw},
    {"positions", "Write the positions of all joints in every frame", SetUpPositions},
    {"rotations", "Write the rotations of all joints in every frame", SetUpRotations},
    {"angles", "Write the degrees of freedom of a motion, with their limits, in every frame", SetUpAngles},
    {"convert", "Convert between ASF and AMC, BVH and glTF, and to tables", SetUpConvert},
    {"batch", "Convert or check whole collections of motions", SetUpBatch},
    {"edit", "Change a skeleton and its motions: names, size, limits, dummy bones", SetUpEdit},
    {"diff", "Compare two figures and their motions", SetUpDiff},
};

void SetUpProgram(CLI::App& pProgram, KConsole& pConsole)
{
    pProgram.name("asf");
    pProgram.formatter(std::make_shared<KFormatter>());
    pProgram.get_formatter()->column_width(34);
    pProgram.get_formatter()->label("SUBCOMMAND", "COMMAND");
    pProgram.footer(kExamples);
    pProgram.set_help_flag("-h,--help", "Show this help");
    pProgram.set_version_flag("--version", "asf " QEX_VERSION, "Show the version");
    pProgram.require_subcommand(1);
    for (const KCommand& lCommand : kCommands)
    {
        CLI::App* const lAdded = pProgram.add_subcommand(lCommand.mName, lCommand.mDescription)->group("Commands");
        // The options of the command that is called alone: those of all cost a million instructions at each start.
        lAdded->preparse_callback([lAdded, &lCommand, &pConsole](size_t) { lCommand.mSetUp(*lAdded, pConsole); });
    }
}

/// The command given, for the hint after an error.
std::string GivenCommand(const CLI::App& pProgram)
{
    const auto lGiven = pProgram.get_subcommands();
    return lGiven.empty() ? "asf" : "asf " + lGiven.front()->get_name();
}

void ReportUsageError(const CLI::App& pProgram, const CLI::ParseError& pError, KConsole& pConsole)
{
    pConsole.Fail(eEXIT_USAGE, DescribeUsageError(pProgram, pError));
    const std::string lHint = "Run '" + GivenCommand(pProgram) + " --help' for usage.\n";
    std::fwrite(lHint.data(), 1, lHint.size(), stderr);
}

void ParseAndRun(int pArgumentCount, char** pArguments, KConsole& pConsole)
{
    CLI::App lProgram{kDescription};
    SetUpProgram(lProgram, pConsole);
    try
    {
        // The parser expects the arguments in reverse order, without the program's name.
        std::vector<std::string> lArguments = SplitOutputPairs(pArgumentCount, pArguments);
        lArguments.erase(lArguments.begin(),
                         lArguments.begin() + std::min<std::ptrdiff_t>(1, static_cast<std::ptrdiff_t>(lArguments.size())));
        std::reverse(lArguments.begin(), lArguments.end());
        lProgram.parse(std::move(lArguments));
    }
    catch (const CLI::Success& lSuccess)
    {
        // --help and --version.
        std::ostringstream lText;
        lProgram.exit(lSuccess, lText, lText);
        pConsole.Out(lText.str());
    }
    catch (const CLI::ParseError& lError)
    {
        ReportUsageError(lProgram, lError, pConsole);
    }
}

/// Runs \p pRun and reports what it throws; out of memory is reported without allocating.
template <typename TRun>
void RunGuarded(KConsole& pConsole, const TRun& pRun) noexcept
{
    try
    {
        try
        {
            pRun();
        }
        catch (const std::bad_alloc&)
        {
            throw;
        }
        catch (const std::exception& lError)
        {
            pConsole.Fail(eEXIT_SYSTEM, lError.what());
        }
    }
    catch (const std::exception&)
    {
        std::fputs("asf: error: out of memory\n", stderr);
        pConsole.Raise(eEXIT_SYSTEM);
    }
}

} // namespace

int RunProgram(int pArgumentCount, char** pArguments)
{
    InstallSignals();
    KConsole lConsole;
    RunGuarded(lConsole, [&] { ParseAndRun(pArgumentCount, pArguments, lConsole); });
    RunGuarded(lConsole, [&] { lConsole.CloseOut(); });
    return lConsole.GetExit();
}

} // namespace asfapp
