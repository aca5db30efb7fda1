#ifndef TESTS_SUPPORT_VECTORS_H
#define TESTS_SUPPORT_VECTORS_H

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// \file
/// Test cases with results computed by another program: reading their JSON lines and comparing with them.

namespace qextest
{

using KJson = nlohmann::json;

/// All lines of a file, one JSON value each. If the file cannot be read or a line is not JSON, the test fails and the list ends there.
std::vector<KJson> ReadJsonLines(const std::filesystem::path& pPath);

/// Whether two numbers agree within \p pTolerance, absolute or relative to the expected one. Equal infinities agree, and so do two
/// NaNs.
bool IsNear(double pActual, double pExpected, double pTolerance);

/// Whether \p pActual agrees with \p pExpected number by number (see IsNear); the message names the first index that does not.
/// \p pExpected is an array of numbers, or of arrays of them in any depth, read in order; null agrees with every number.
testing::AssertionResult AreNear(const double* pActual, size_t pCount, const KJson& pExpected, double pTolerance);
/// As above.
testing::AssertionResult AreNear(const std::vector<double>& pActual, const KJson& pExpected, double pTolerance);

/// The numbers in arrays of any depth, in order; the strings "inf" and "-inf" are numbers, anything else that is not one gives NaN.
std::vector<double> Numbers(const KJson& pArray);

/// The bytes of a JSON string whose code points U+0080 to U+00FF represent the bytes of the same value.
std::string Bytes(const KJson& pText);

/// The same for text already extracted from the JSON value.
std::string Bytes(const std::string& pText);

} // namespace qextest

#endif
