#ifndef TESTS_SUPPORT_COMMALOCALE_H
#define TESTS_SUPPORT_COMMALOCALE_H

#include <tests/support/testfolders.h>

namespace qextest
{

/// Gives the process a locale with a decimal comma and grouped thousands while it lives: one that is installed, or else one
/// made by localedef for the occasion.
class KCommaLocale
{
public:
    KCommaLocale();
    ~KCommaLocale();
    KCommaLocale(const KCommaLocale&) = delete;
    KCommaLocale& operator=(const KCommaLocale&) = delete;

    /// Whether printf writes a comma now. False where there is neither such a locale nor localedef.
    bool IsActive() const;

private:
    KTempDir mFolder;
};

} // namespace qextest

/// Declares a locale with a decimal comma for the rest of the block; the test fails where there is none.
#define QEX_WITH_COMMA_LOCALE()                                                                                                            \
    const ::qextest::KCommaLocale lCommaLocale;                                                                                            \
    ASSERT_TRUE(lCommaLocale.IsActive()) << "no locale with a decimal comma, and no localedef with charmaps to make one (package locales)"

#endif
