// Runs one job of the library once, for tools/counts.py: callgrind counts only the instructions of CountedJob().
//
// usage: countjob JOB SKELETON.asf MOTION.amc, JOB being read-asf, read-amc, import-amc or write-amc

#include <bench/ignoreframes.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>

using namespace qexsdk;

namespace
{

struct KFiles
{
    const char* mAsf;
    const char* mAmc;
};

} // namespace

/// extern "C", because callgrind's --toggle-collect finds it by name.
extern "C"
{
    bool CountedJob(const std::function<bool()>& pJob);

    [[gnu::noinline]] bool CountedJob(const std::function<bool()>& pJob)
    {
        return pJob();
    }
}

namespace
{

bool ReadAsf(const KFiles& pFiles)
{
    KQexFileAcclaimAsf lFile(false);
    KQexAsfScene       lScene;
    return CountedJob([&] { return lFile.OpenRead(pFiles.mAsf) && lFile.Read(&lScene, false, false, false); });
}

bool ReadAmc(const KFiles& pFiles)
{
    KQexImportAcclaimResult lResult;
    const KQexAsfSceneOwner lSkeleton = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::File(pFiles.mAsf), {}, lResult);
    KQexFileAcclaimAmc      lFile(false);
    qexbench::KIgnoreFrames lVisitor;
    return lSkeleton && CountedJob([&] { return lFile.OpenRead(pFiles.mAmc) && lFile.ReadFrames(lSkeleton.get(), {}, lVisitor); });
}

bool Import(KQexScene* pScene, const KFiles& pFiles, KQexImportAcclaimResult& pResult)
{
    KQexImportAcclaimOptions lOptions;
    lOptions.mKeepAsfScene = true;
    return KQexImporterAcclaim::Import(pScene, KQexAcclaimSource::File(pFiles.mAsf), {KQexAcclaimSource::File(pFiles.mAmc)}, lOptions,
                                       pResult);
}

bool ImportAmc(const KFiles& pFiles)
{
    KQexScene* lScene = KQexScene::Create("counts");
    bool       lDone = false;
    {
        KQexImportAcclaimResult lResult;
        lDone = CountedJob([&] { return Import(lScene, pFiles, lResult); });
    }
    lScene->Destroy();
    return lDone;
}

bool WriteAmc(const KFiles& pFiles)
{
    KQexScene* lScene = KQexScene::Create("counts");
    bool       lDone = false;
    {
        KQexImportAcclaimResult  lImported;
        KQexExportAcclaimOptions lOptions;
        KQexExportAcclaimResult  lResult;
        std::string              lAsf;
        std::string              lAmc;
        lOptions.mThreads = 1;
        lDone = Import(lScene, pFiles, lImported) &&
                CountedJob([&] { return KQexExporterAcclaim::ExportBuffers(lImported.mRootNode, lAsf, lAmc, lOptions, lResult); });
    }
    lScene->Destroy();
    return lDone;
}

} // namespace

int main(int pCount, char** pArguments)
{
    const std::map<std::string, bool (*)(const KFiles&)> lJobs = {
        {"read-asf", ReadAsf}, {"read-amc", ReadAmc}, {"import-amc", ImportAmc}, {"write-amc", WriteAmc}};
    const auto lJob = pCount == 4 ? lJobs.find(pArguments[1]) : lJobs.end();
    if (lJob == lJobs.end())
    {
        std::fprintf(stderr, "usage: countjob read-asf|read-amc|import-amc|write-amc SKELETON.asf MOTION.amc\n");
        return 2;
    }
    return lJob->second({pArguments[2], pArguments[3]}) ? 0 : 1;
}
