#include <tests/faults/faultconvert.h>

#include <apps/asf/asfprogram.h>

#include <fcntl.h>
#include <unistd.h>

namespace qextest
{

namespace
{

/// Redirects standard error to a file while it exists. Allocates nothing.
class KErrorCatcher
{
public:
    explicit KErrorCatcher(const std::string& pPath) : mPath(pPath), mSaved(::dup(STDERR_FILENO))
    {
        const int lFile = ::open(mPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        ::dup2(lFile, STDERR_FILENO);
        ::close(lFile);
    }
    ~KErrorCatcher()
    {
        ::dup2(mSaved, STDERR_FILENO);
        ::close(mSaved);
    }
    KErrorCatcher(const KErrorCatcher&) = delete;
    KErrorCatcher& operator=(const KErrorCatcher&) = delete;

    /// Whether nothing was printed.
    bool IsEmpty() const { return ::lseek(STDERR_FILENO, 0, SEEK_END) == 0; }

private:
    const std::string& mPath;
    int                mSaved;
};

} // namespace

bool RunConvert(KStage& pStage, std::initializer_list<const char*> pInputs, std::initializer_list<const char*> pOutputs)
{
    std::vector<std::string> lArguments;
    std::vector<char*>       lArgv;
    const std::string        lErrorPath = MakeUnfailing([&] { return pStage.mFiles.In("stderr"); });
    {
        const KUnfailingMemory lUnfailing;
        lArguments = {"asf", "convert", "--quiet", "--threads", "1"};
        for (const char* lInput : pInputs)
        {
            lArguments.push_back(pStage.mFiles.In(lInput));
        }
        for (const char* lOutput : pOutputs)
        {
            lArguments.insert(lArguments.end(), {"-o", pStage.mFiles.Out(lOutput)});
        }
        for (std::string& lArgument : lArguments)
        {
            lArgv.push_back(lArgument.data());
        }
    }
    int  lExit = 0;
    bool lHasError = false;
    {
        const KErrorCatcher lCatcher(lErrorPath);
        lExit = asfapp::RunProgram(static_cast<int>(lArgv.size()), lArgv.data());
        lHasError = !lCatcher.IsEmpty();
    }
    return Record(pStage, lExit == 0, lHasError, [&lErrorPath] { return ReadFile(lErrorPath); });
}

} // namespace qextest
