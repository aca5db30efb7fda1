#ifndef TESTS_SUPPORT_VECTORS_H
#define TESTS_SUPPORT_VECTORS_H

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// \file
/// Cases with the results of another program: reading their JSON lines and comparing with them.

namespace qextest
{

using KJson = nlohmann::json;

/// Every line of a file, one JSON value a line. A file that cannot be read, or a line that is no JSON, fails the test and ends the
/// list there.
std::vector<KJson> ReadJsonLines(const std::filesystem::path& pPath);

/// Whether two numbers agree within \p pTolerance, absolute or relative to the expected one. Equal infinities agree, and so do two
/// that are not numbers.
bool IsNear(double pActual, double pExpected, double pTolerance);

/// Whether \p pActual agrees with \p pExpected, number for number, as IsNear; the message names the first index that does not.
/// \p pExpected is an array of numbers, or of arrays of them in any depth, read in order; null agrees with every number.
testing::AssertionResult AreNear(const double* pActual, size_t pCount, const KJson& pExpected, double pTolerance);
/// As above.
testing::AssertionResult AreNear(const std::vector<double>& pActual, const KJson& pExpected, double pTolerance);

/// The numbers of an array, of arrays in any depth, in order; the texts "inf" and "-inf" are numbers, what else is none gives a quiet
/// NaN.
std::vector<double> Numbers(const KJson& pArray);

/// The text of a JSON string whose code points U+0080 to U+00FF stand for the bytes of the same value.
std::string Bytes(const KJson& pText);

/// The same for text that is already out of the JSON value.
std::string Bytes(const std::string& pText);

} // namespace qextest

#endif
