#ifndef TESTS_SUPPORT_TESTFOLDERS_H
#define TESTS_SUPPORT_TESTFOLDERS_H

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

/// \file
/// Where tests find their data, and where they may write.

namespace qextest
{

/// The folder that environment variable \p pVariable names; empty when it is unset or no folder.
std::filesystem::path FolderFromEnvironment(const char* pVariable);

/// Real files (ASF_CORPUS_DIR); empty when there are none.
std::filesystem::path CorpusDir();

/// World positions of the real files, computed by another program (ASF_ORACLE_DIR); empty when there are none.
std::filesystem::path OracleDir();

/// Cases with the results of another program (ASF_VECTORS_DIR); empty when there are none.
std::filesystem::path VectorsDir();

/// The samples of the repository.
std::filesystem::path SamplesDir();

/// The whole of a file, byte by byte. A file that cannot be read fails the test and gives "".
std::string ReadFile(const std::filesystem::path& pPath);

/// Makes or replaces a file. A file that cannot be written fails the test.
void WriteFile(const std::filesystem::path& pPath, const std::string& pText);

/// A new, empty folder, removed with all that is in it when the object goes.
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

/// Skips the test, saying which variable is missing, when \p pFolder (of CorpusDir, OracleDir or VectorsDir) is empty.
#define QEX_SKIP_WITHOUT(pFolder, pVariable)                                                                                               \
    if ((pFolder).empty())                                                                                                                 \
    GTEST_SKIP() << pVariable << " names no folder"

#define QEX_SKIP_WITHOUT_CORPUS() QEX_SKIP_WITHOUT(::qextest::CorpusDir(), "ASF_CORPUS_DIR")
#define QEX_SKIP_WITHOUT_ORACLE() QEX_SKIP_WITHOUT(::qextest::OracleDir(), "ASF_ORACLE_DIR")
#define QEX_SKIP_WITHOUT_VECTORS() QEX_SKIP_WITHOUT(::qextest::VectorsDir(), "ASF_VECTORS_DIR")

#endif
