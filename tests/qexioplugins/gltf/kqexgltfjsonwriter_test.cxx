#include <qexioplugins/gltf/kqexgltfjsonwriter.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <random>

using namespace qexsdk;

namespace
{

TEST(KQexGltfJsonWriter, OneLineOrOneLinePerValue)
{
    for (const bool lIsIndented : {false, true})
    {
        std::string        lText;
        KQexGltfJsonWriter lJson(lText, lIsIndented);
        lJson.BeginObject();
        lJson.Key("a");
        lJson.BeginArray();
        lJson.Index(-1);
        lJson.BeginObject();
        lJson.EndObject();
        lJson.EndArray();
        lJson.Key("b");
        lJson.Number(0.5);
        lJson.EndObject();
        EXPECT_EQ(lText, lIsIndented ? "{\n \"a\": [\n  -1,\n  {}\n ],\n \"b\": 0.5\n}" : "{\"a\":[-1,{}],\"b\":0.5}");
    }
}

struct KTextCase
{
    const char* mWhat;
    std::string mText;
    std::string mWritten;
};

class KQexGltfJsonTextTest : public testing::TestWithParam<KTextCase>
{
};

TEST_P(KQexGltfJsonTextTest, IsQuoted)
{
    std::string lText;
    KQexGltfJsonWriter(lText, false).Text(GetParam().mText);
    EXPECT_EQ(lText, GetParam().mWritten);
}

INSTANTIATE_TEST_SUITE_P(Texts, KQexGltfJsonTextTest,
                         testing::Values(KTextCase{"empty", "", "\"\""}, KTextCase{"plain", "a b/c", "\"a b/c\""},
                                         KTextCase{"quotes", "\"\\\"", "\"\\\"\\\\\\\"\""},
                                         KTextCase{"controls", std::string("\0\n\x1f\x7f", 4), "\"\\u0000\\u000a\\u001f\x7f\""},
                                         KTextCase{"UTF-8", "Knö\xE2\x82\xAC", "\"Knö\xE2\x82\xAC\""},
                                         KTextCase{"invalid UTF-8", "a\xFF\xC3", "\"a??\""}));

/// Another JSON reader reads the same numbers.
TEST(KQexGltfJsonWriter, NumbersRoundTrip)
{
    std::mt19937_64     lRandom(8);
    std::vector<double> lNumbers = {0.0, -0.0, 1.0, 0.1, 1e300, -1e-300, 5e-324, 9007199254740993.0, std::numeric_limits<double>::max()};
    for (int i = 0; i < 2000; ++i)
    {
        lNumbers.push_back(std::ldexp(static_cast<double>(lRandom()) - 9e18, static_cast<int>(lRandom() % 400) - 200));
        lNumbers.push_back(static_cast<double>(static_cast<float>(std::ldexp(lNumbers.back(), -200))));
    }
    std::string        lText;
    KQexGltfJsonWriter lJson(lText, false);
    lJson.BeginArray();
    for (const double lNumber : lNumbers)
    {
        lJson.Number(lNumber);
    }
    lJson.Number(std::numeric_limits<double>::infinity());
    lJson.Number(std::numeric_limits<double>::quiet_NaN());
    lJson.Count(std::numeric_limits<size_t>::max());
    lJson.EndArray();
    EXPECT_EQ(lText.substr(0, 6), "[0,-0,") << "the other reader drops the sign of an integer zero";
    const nlohmann::json lRead = nlohmann::json::parse(lText);
    ASSERT_EQ(lRead.size(), lNumbers.size() + 3);
    for (size_t i = 0; i < lNumbers.size(); ++i)
    {
        EXPECT_EQ(lRead[i].get<double>(), lNumbers[i]);
    }
    EXPECT_TRUE(lRead[lNumbers.size()].is_null() && lRead[lNumbers.size() + 1].is_null()) << "JSON cannot represent them";
    EXPECT_EQ(lRead.back().get<size_t>(), std::numeric_limits<size_t>::max());
}

} // namespace
