#ifndef TESTS_FAULTS_FAULTFILES_H
#define TESTS_FAULTS_FAULTFILES_H

#include <tests/support/testfolders.h>

#include <filesystem>
#include <map>
#include <string>

namespace qextest
{

/// Input files in every format, and a folder of output files that operations replace. Deleted with the object.
class KFaultFiles
{
public:
    /// \param pFrames number of frames of the motions
    explicit KFaultFiles(int pFrames);

    std::string In(const char* pName) const { return (mFolder / "in" / pName).string(); }
    std::string Out(const char* pName) const { return (mFolder / "out" / pName).string(); }

    std::filesystem::path OutFolder() const { return mFolder / "out"; }

    /// Resets every output to its old content and removes all other files of the folder.
    void ResetOutputs() const;

    /// Contents of all files in the output folder, by name.
    std::map<std::string, std::string> GetOutputs() const;

private:
    /// Writes the motion in the other formats, and makes inputs of them.
    void WriteOthers() const;

    KTempDir mFolder;
};

/// Expects \p pNow to equal \p pExpected and names each file that differs.
void ExpectSameFiles(const std::map<std::string, std::string>& pNow, const std::map<std::string, std::string>& pExpected);

} // namespace qextest

#endif
