#ifndef APPS_ASF_FIGURE_CONVERTER_H
#define APPS_ASF_FIGURE_CONVERTER_H

#include <apps/asf/figure/convertoptions.h>
#include <apps/asf/figure/frameoutput.h>
#include <apps/asf/figure/loading.h>

#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

/// Writes a figure to the outputs of an `asf convert` run: each is prepared, then all are committed together.
class KConverter
{
public:
    /// \p pInputs: paths that must not be written.
    KConverter(const KConvertOptions& pOptions, qexsdk::KQexFigure& pFigure, std::vector<std::string> pInputs, KConsole& pConsole);
    KConverter(const KConverter&) = delete;
    KConverter& operator=(const KConverter&) = delete;

    /// On an error, reports it, raises the exit status and replaces no further file.
    void Run();

private:
    /// The takes of each of an output's files: one each, or all in one.
    using KTakeGroups = std::vector<std::vector<const KSampledTake*>>;

    bool        SampleTakes();
    bool        FindPart(KSampledTake& pTake);
    bool        CheckTargets();
    bool        CheckTarget(const KConvertOutput& pOutput);
    std::string PathOf(const KConvertOutput& pOutput, const KSampledTake& pTake) const;

    KTakeGroups GroupsOf(const KConvertOutput& pOutput) const;

    bool WriteAll();
    bool WriteFrames();
    bool WriteTake(const KSampledTake& pTake, const std::vector<KFrameOutput*>& pOutputs);
    bool WriteAcclaim();
    bool WriteMotion(const std::string& pPath, const KSampledTake& pTake, qexsdk::KQexAsfScene* pSkeleton,
                     const qexsdk::KQexAmcSkeletonNotes& pNotes);
    bool WriteSkeletonAndMotions(const KConvertOutput& pAsf, const KConvertOutput* pAmc, const std::vector<const KSampledTake*>& pTakes);
    bool Commit();
    void Report() const;

    std::vector<std::unique_ptr<KFrameOutput>> MakeFrameOutputs();
    qexsdk::KQexRunResult                      Evaluate(const KSampledTake& pTake, const std::vector<qexsdk::KQexFrameSink*>& pSinks) const;

    qexsdk::KQexExportAcclaimOptions AcclaimOptions(const KSampledTake& pTake);
    qexsdk::KQexAsfSceneOwner        ReadSkeleton(const std::string& pPath, qexsdk::KQexAmcSkeletonNotes& pNotes);
    bool                             ReportExport(const qexsdk::KQexExportAcclaimResult& pResult);
    const KConvertOutput*            FindTarget(EOutputKind pKind) const;

    const KConvertOptions&    mOptions;
    qexsdk::KQexFigure&       mFigure;
    std::vector<std::string>  mInputs;
    KConsole&                 mConsole;
    std::vector<KSampledTake> mTakes; ///< At least one.

    KFrameOutputs mOutputs; ///< Files that are complete, not yet committed.
};

} // namespace asfapp

#endif
