#ifndef APPS_ASF_FIGURE_CONVERTER_H
#define APPS_ASF_FIGURE_CONVERTER_H

#include <apps/asf/figure/convertoptions.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/report/jsontext.h>
#include <qexfigure/output/kqexfigurewrite.h>

#include <string>
#include <vector>

namespace asfapp
{

/// A take and the frames of it to write.
struct KSampledTake
{
    const qexsdk::KQexFigureTake* mTake = nullptr; ///< Null: only the rest pose.
    std::string                   mName;           ///< As used in file names; several takes may have one.
    qexsdk::KQexSamplingRequest   mRequest;
    qexsdk::KQexSampling          mSampling; ///< What mRequest gives.
};

/// Writes a figure to the outputs of an `asf convert` run, all or none.
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

    bool        SampleTakes();
    bool        FindPart(KSampledTake& pTake);
    bool        CheckTargets();
    bool        CheckTarget(const KConvertOutput& pOutput);
    std::string PathOf(const KConvertOutput& pOutput, const KSampledTake& pTake) const;

    static std::vector<std::string> FilesOf(qexsdk::KQexOutputFormat pFormat, const std::string& pPath);

    KTakeGroups GroupsOf(const KConvertOutput& pOutput) const;

    bool WriteAll();
    bool ReadSkeleton(qexsdk::KQexFigureWriteOptions& pOptions);
    bool Write(qexsdk::KQexFigureWriteOptions& pOptions, qexsdk::KQexFigureReport& pReport);
    void Report() const;

    qexsdk::KQexFigureWriteOptions        WriteOptions() const;
    std::vector<qexsdk::KQexFigureOutput> ListOutputs() const;

    const KConvertOptions&    mOptions;
    qexsdk::KQexFigure&       mFigure;
    std::vector<std::string>  mInputs;
    KConsole&                 mConsole;
    std::vector<KSampledTake> mTakes;    ///< At least one.
    qexsdk::KQexAsfSceneOwner mSkeleton; ///< The one of --skeleton, once it is needed.
};

} // namespace asfapp

#endif
