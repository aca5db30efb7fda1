#ifndef TESTS_SUPPORT_COMMALOCALE_H
#define TESTS_SUPPORT_COMMALOCALE_H

#include <tests/support/testfolders.h>

namespace qextest
{

/// Sets a process locale with a decimal comma and grouped thousands during its lifetime: an installed one, or else one compiled with
/// localedef.
class KCommaLocale
{
public:
    KCommaLocale();
    ~KCommaLocale();
    KCommaLocale(const KCommaLocale&) = delete;
    KCommaLocale& operator=(const KCommaLocale&) = delete;

    /// Whether printf writes a comma now. False when neither such a locale nor localedef is available.
    bool IsActive() const;

private:
    KTempDir mFolder;
};

} // namespace qextest

/// Sets a locale with a decimal comma for the rest of the block; the test fails when there is none.
#define QEX_WITH_COMMA_LOCALE()                                                                                                            \
    const ::qextest::KCommaLocale lCommaLocale;                                                                                            \
    ASSERT_TRUE(lCommaLocale.IsActive()) << "no locale with a decimal comma, and no localedef with charmaps to make one (package locales)"

#endif
