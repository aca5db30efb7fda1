#ifndef TESTS_SUPPORT_TESTFOLDERS_H
#define TESTS_SUPPORT_TESTFOLDERS_H

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

/// \file
/// Where tests find their data, and where they may write.

namespace qextest
{

/// The folder named by the environment variable \p pVariable; empty when it is unset or not a folder.
std::filesystem::path FolderFromEnvironment(const char* pVariable);

/// Real files (ASF_CORPUS_DIR); empty when there are none.
std::filesystem::path CorpusDir();

/// World positions of the real files, computed by another program (ASF_ORACLE_DIR); empty when there are none.
std::filesystem::path OracleDir();

/// Test cases with results computed by another program: ASF_VECTORS_DIR, or else those in the repository (tests/vectors).
std::filesystem::path VectorsDir();

/// The repository's samples.
std::filesystem::path SamplesDir();

/// Contents of a file. If it cannot be read, the test fails and the result is "".
std::string ReadFile(const std::filesystem::path& pPath);

/// Creates or replaces a file. If it cannot be written, the test fails.
void WriteFile(const std::filesystem::path& pPath, const std::string& pText);

/// A new, empty folder, removed with its contents on destruction.
class KTempDir
{
public:
    KTempDir();
    ~KTempDir();
    KTempDir(const KTempDir&) = delete;
    KTempDir& operator=(const KTempDir&) = delete;

    const std::filesystem::path& Path() const { return mPath; }

    /// The path of \p pName in the folder.
    std::filesystem::path operator/(const std::string& pName) const { return mPath / pName; }

private:
    std::filesystem::path mPath;
};

} // namespace qextest

#endif
