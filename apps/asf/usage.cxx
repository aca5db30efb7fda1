#include <apps/asf/usage.h>

#include <apps/asf/figure/motionoptions.h>
#include <apps/asf/report/numbertext.h>
#include <qexfigure/kqexdidyoumean.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace asfapp
{

namespace
{

std::string DescribeMissingCommand(const CLI::App& pProgram)
{
    const std::vector<std::string> lWords = pProgram.remaining();
    if (lWords.empty())
    {
        return "a command is required";
    }
    if (lWords.front()[0] == '-')
    {
        return "a command is required before " + lWords.front();
    }
    std::vector<std::string> lNames;
    std::string              lCommands;
    for (const CLI::App* lCommand : pProgram.get_subcommands([](const CLI::App*) { return true; }))
    {
        lNames.push_back(lCommand->get_name());
        lCommands += (lCommands.empty() ? "" : ", ") + lCommand->get_name();
    }
    const std::string lHint = qexsdk::DidYouMean(lWords.front(), lNames);
    return "unknown command " + lWords.front() + (lHint.empty() ? " (commands: " + lCommands + ")" : lHint);
}

std::string DescribeUnknownOption(const CLI::App& pCommand, const std::string& pWord)
{
    std::vector<std::string> lNames;
    for (const CLI::Option* lOption : pCommand.get_options())
    {
        for (const std::string& lName : lOption->get_lnames())
        {
            lNames.push_back("--" + lName);
        }
    }
    const std::string lName = pWord.substr(0, pWord.find('='));
    return "unknown option " + lName + qexsdk::DidYouMean(lName, lNames);
}

/// A missing --output: its name is often given as one more input.
std::string DescribeMissingOutput(const CLI::App& pCommand)
{
    const CLI::Option*       lFile = FindOption(pCommand, "FILE");
    std::vector<std::string> lWords = lFile != nullptr ? lFile->results() : std::vector<std::string>();
    const auto               lRest = pCommand.remaining();
    lWords.insert(lWords.end(), lRest.begin(), lRest.end());
    return "--output is required: write the output's name after -o" + (lWords.size() > 1 ? ": -o " + lWords.back() : " FILE");
}

std::string DescribeCount(const CLI::Option& pOption, const std::string& pName)
{
    const long long lGiven = static_cast<long long>(pOption.count());
    const long long lMax = pOption.get_items_expected_max();
    if (lGiven == 0)
    {
        return pName + ": a value is missing";
    }
    if (lMax == 1 && lGiven > 1 && !pOption.get_positional())
    {
        return pName + ": expected once, not " + std::to_string(lGiven) + " times";
    }
    const bool      lIsTooMany = lGiven > lMax;
    const long long lBound = lIsTooMany ? lMax : pOption.get_items_expected_min();
    return pName + ": expected at " + (lIsTooMany ? "most " : "least ") + std::to_string(lBound) + ", not " + std::to_string(lGiven);
}

} // namespace

CLI::Validator NumberFrom(double pMin, double pMax, bool pIsWhole)
{
    const std::string lWhat = std::string(pIsWhole ? "a whole number" : "a number") + " from " + ShortText(pMin) + " to " + ShortText(pMax);
    return CLI::Validator(
        [=](std::string& pText)
        {
            double     lValue = 0;
            const bool lOk = ParseNumber(pText, lValue) && lValue >= pMin && lValue <= pMax && (!pIsWhole || lValue == std::floor(lValue));
            return lOk ? std::string() : "expected " + lWhat + ", not " + pText;
        },
        "", "");
}

CLI::Validator OneOf(std::vector<std::string> pWords)
{
    return CLI::Validator(
        [lWords = std::move(pWords)](std::string& pText)
        {
            const bool lOk = std::find(lWords.begin(), lWords.end(), pText) != lWords.end();
            return lOk ? std::string() : "expected " + ListWords(lWords) + ", not " + pText;
        },
        "", "");
}

std::string ListWords(const std::vector<std::string>& pWords)
{
    std::string lList;
    for (size_t lIndex = 0; lIndex < pWords.size(); ++lIndex)
    {
        lList += (lIndex == 0 ? "" : lIndex + 1 < pWords.size() ? ", " : " or ") + pWords[lIndex];
    }
    return lList;
}

std::string DescribeUsageError(const CLI::App& pProgram, const CLI::ParseError& pError)
{
    const auto lGiven = pProgram.get_subcommands();
    if (lGiven.empty())
    {
        return pError.get_name() == "RequiredError" ? DescribeMissingCommand(pProgram) : pError.what();
    }
    const CLI::App&                lCommand = *lGiven.front();
    const std::vector<std::string> lRest = lCommand.remaining();
    const auto                     lOption =
        std::find_if(lRest.begin(), lRest.end(), [](const std::string& pWord) { return pWord.size() > 1 && pWord[0] == '-'; });
    if (lOption != lRest.end())
    {
        return DescribeUnknownOption(lCommand, *lOption);
    }
    const std::string  lText = pError.what();
    const std::string  lName = lText.substr(0, lText.find(':'));
    const CLI::Option* lNamed = FindOption(lCommand, lName);
    if (lText == "--output is required")
    {
        return DescribeMissingOutput(lCommand);
    }
    if (pError.get_name() == "ArgumentMismatch" && lNamed != nullptr)
    {
        return DescribeCount(*lNamed, lName);
    }
    if (pError.get_name() == "ConversionError")
    {
        return "not understood: " + lText.substr(lText.find(':') + 2);
    }
    return pError.get_name() == "ExtrasError" && !lRest.empty() ? "expected no more after the files, not " + lRest.front() : lText;
}

const CLI::Option* FindOption(const CLI::App& pCommand, const std::string& pName)
{
    const auto lFound = pCommand.get_options([&pName](const CLI::Option* pOption) { return pOption->check_name(pName); });
    return lFound.empty() ? nullptr : lFound.front();
}

} // namespace asfapp
