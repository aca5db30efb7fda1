#include <tests/support/testfolders.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace qextest
{

namespace fs = std::filesystem;

fs::path FolderFromEnvironment(const char* pVariable)
{
    const char* lValue = std::getenv(pVariable);
    if (lValue == nullptr || *lValue == '\0')
    {
        return {};
    }
    std::error_code lError;
    return fs::is_directory(lValue, lError) ? fs::path(lValue) : fs::path();
}

fs::path CorpusDir()
{
    return FolderFromEnvironment("ASF_CORPUS_DIR");
}

fs::path OracleDir()
{
    return FolderFromEnvironment("ASF_ORACLE_DIR");
}

fs::path VectorsDir()
{
    const fs::path lFolder = FolderFromEnvironment("ASF_VECTORS_DIR");
    return lFolder.empty() ? fs::path(QEX_VECTORS_DIR) : lFolder;
}

fs::path SamplesDir()
{
    return fs::path(QEX_SOURCE_DIR) / "samples";
}

std::string ReadFile(const fs::path& pPath)
{
    std::ifstream lIn(pPath, std::ios::binary);
    EXPECT_TRUE(lIn.is_open()) << "cannot read " << pPath;
    return std::string(std::istreambuf_iterator<char>(lIn), std::istreambuf_iterator<char>());
}

void WriteFile(const fs::path& pPath, const std::string& pText)
{
    std::ofstream lOut(pPath, std::ios::binary);
    lOut.write(pText.data(), static_cast<std::streamsize>(pText.size()));
    lOut.close();
    EXPECT_TRUE(lOut.good()) << "cannot write " << pPath;
}

KTempDir::KTempDir()
{
    // Several test programs run at once: process id and counter make the name unique.
    static std::atomic<int> sCount{0};
    std::string             lName = "qex-test-" + std::to_string(getpid()) + "-" + std::to_string(sCount++);
    mPath = fs::temp_directory_path() / lName;
    fs::remove_all(mPath);
    fs::create_directories(mPath);
}

KTempDir::~KTempDir()
{
    std::error_code lError;
    fs::remove_all(mPath, lError);
}

} // namespace qextest
