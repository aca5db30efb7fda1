#include <tests/support/commalocale.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qextest
{

namespace
{

constexpr char kSource[] = "comment_char %\n"
                           "escape_char /\n"
                           "LC_NUMERIC\n"
                           "decimal_point \"<U002C>\"\n"
                           "thousands_sep \"<U002E>\"\n"
                           "grouping 3;3\n"
                           "END LC_NUMERIC\n";

} // namespace

KCommaLocale::KCommaLocale()
{
    for (const char* lName : {"de_DE.UTF-8", "fr_FR.UTF-8", "es_ES.UTF-8", "de_DE"})
    {
        if (std::setlocale(LC_ALL, lName) != nullptr)
        {
            return;
        }
    }
    WriteFile(mFolder / "source", kSource);
    const std::string lFolder = mFolder.Path().string();
    // The source defines LC_NUMERIC only, so localedef warns and its exit status is not 0.
    const std::string lCommand = "localedef -c -i '" + lFolder + "/source' '" + lFolder + "/qex_COMMA' >/dev/null 2>&1";
    if (std::system(lCommand.c_str()) < 0)
    {
        return;
    }
    ::setenv("LOCPATH", lFolder.c_str(), 1);
    std::setlocale(LC_NUMERIC, "qex_COMMA");
}

KCommaLocale::~KCommaLocale()
{
    std::setlocale(LC_ALL, "C");
    ::unsetenv("LOCPATH");
}

bool KCommaLocale::IsActive() const
{
    char lText[16];
    std::snprintf(lText, sizeof lText, "%.1f", 0.5);
    return std::strcmp(lText, "0,5") == 0;
}

} // namespace qextest
