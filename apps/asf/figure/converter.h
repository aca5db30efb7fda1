#ifndef APPS_ASF_FIGURE_CONVERTER_H
#define APPS_ASF_FIGURE_CONVERTER_H

#include <apps/asf/figure/convertoptions.h>
#include <apps/asf/figure/frameoutput.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/report/jsontext.h>

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

    /// False after an error; it is reported, the exit status raised and no further file replaced.
    bool Run();

    /// What was written, after a run without errors: `joints`, `takes` and `outputs` of docs/json.md.
    void Describe(KJson& pObject) const;

private:
    /// The takes of each of an output's files: one each, or all in one.
    using KTakeGroups = std::vector<std::vector<const KSampledTake*>>;
    using KOutputList = std::vector<std::unique_ptr<KFrameOutput>>;

    bool        SampleTakes();
    bool        FindPart(KSampledTake& pTake);
    bool        CheckTargets();
    bool        CheckTarget(const KConvertOutput& pOutput);
    std::string PathOf(const KConvertOutput& pOutput, const KSampledTake& pTake) const;

    static std::vector<std::string> FilesOf(EOutputKind pKind, const std::string& pPath);

    KTakeGroups GroupsOf(const KConvertOutput& pOutput) const;

    bool WriteAll();
    bool WriteFrames(const KOutputList& pOutputs, const std::vector<qexsdk::KQexNode*>& pRoots);
    bool WriteTake(const KSampledTake& pTake, const std::vector<KFrameOutput*>& pOutputs, const std::vector<qexsdk::KQexNode*>& pRoots);
    bool Commit();
    void Report() const;

    bool                  MakeAcclaimOutputs(KOutputList& pOutputs);
    void                  MakeOtherOutputs(KOutputList& pOutputs);
    bool                  ReadSkeleton(const std::string& pPath, KAcclaimTarget& pTarget);
    qexsdk::KQexRunResult Evaluate(const KSampledTake& pTake, const std::vector<qexsdk::KQexNode*>& pRoots,
                                   const std::vector<qexsdk::KQexFrameSink*>& pSinks) const;
    const KConvertOutput* FindTarget(EOutputKind pKind) const;

    const KConvertOptions&    mOptions;
    qexsdk::KQexFigure&       mFigure;
    std::vector<std::string>  mInputs;
    KConsole&                 mConsole;
    std::vector<KSampledTake> mTakes;    ///< At least one.
    qexsdk::KQexAsfSceneOwner mSkeleton; ///< The one of --skeleton, once it is needed.

    KFrameOutputs mOutputs; ///< Files that are complete, not yet committed.
};

} // namespace asfapp

#endif
