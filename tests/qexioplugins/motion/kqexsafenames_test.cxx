#include <qexioplugins/motion/kqexsafenames.h>

#include <gtest/gtest.h>

#include <string>

using namespace qexsdk;

namespace
{

TEST(KQexUniqueNames, SkipNamesInUse)
{
    KQexUniqueNames lNames;
    for (const char* lName : {"a", "a_2", "a_3"})
    {
        EXPECT_EQ(lNames.Make(lName), lName);
    }
    EXPECT_EQ(lNames.Make("a"), "a_4");
    EXPECT_EQ(lNames.Make("a"), "a_5");

    KQexUniqueNames lShort(4);
    for (const char* lName : {"long", "lo_2", "lo_3"})
    {
        EXPECT_EQ(lShort.Make(std::string(lName) + "er"), lName);
    }
    EXPECT_EQ(lShort.Make("longest"), "lo_4");
}

} // namespace
