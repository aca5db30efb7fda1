/// Runs a fuzz target once on each given file, and on each file in a given folder, so that every build tests all seeds and past
/// findings without a fuzzer. A missing folder counts as empty.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize);

namespace
{

int Replay(const std::filesystem::path& pPath)
{
    std::ifstream     lStream(pPath, std::ios::binary);
    const std::string lText((std::istreambuf_iterator<char>(lStream)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(lText.data()), lText.size());
    return 1;
}

} // namespace

int main(int pCount, char** pArguments)
{
    int lFiles = 0;
    for (int i = 1; i < pCount; ++i)
    {
        if (std::filesystem::is_directory(pArguments[i]))
        {
            for (const auto& lEntry : std::filesystem::directory_iterator(pArguments[i]))
            {
                lFiles += Replay(lEntry.path());
            }
        }
        else if (std::filesystem::exists(pArguments[i]))
        {
            lFiles += Replay(pArguments[i]);
        }
    }
    std::printf("%d files\n", lFiles);
    return lFiles > 0 ? 0 : 1;
}
