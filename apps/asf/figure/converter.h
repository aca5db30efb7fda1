#ifndef APPS_ASF_FIGURE_CONVERTER_H
#define APPS_ASF_FIGURE_CONVERTER_H

#include <apps/asf/figure/convertoptions.h>
#include <apps/asf/figure/loading.h>
#include <qexioplugins/bvh/kqexfilebvh.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

/// A take and the frames of it to write.
struct KSampledTake
{
    const qexsdk::KQexFigureTake* mTake = nullptr; ///< Null: only the rest pose.
    std::string                   mName;           ///< As used in file names; unique.
    qexsdk::KQexSamplingRequest   mRequest;
    qexsdk::KQexSampling          mSampling;
};

/// Writes a figure to the outputs of an `asf convert` run: each is prepared, then all are committed together.
class KConverter
{
public:
    /// \p pInputs: paths that must not be written.
    KConverter(const KConvertOptions& pOptions, qexsdk::KQexFigure& pFigure, std::vector<std::string> pInputs, KConsole& pConsole);

    /// Discards outputs that are not complete.
    ~KConverter();
    KConverter(const KConverter&) = delete;
    KConverter& operator=(const KConverter&) = delete;

    /// On an error, reports it, raises the exit status and replaces no further file.
    void Run();

private:
    bool        SampleTakes();
    bool        FindPart(KSampledTake& pTake);
    bool        CheckTargets();
    std::string PathOf(const KConvertOutput& pOutput, const KSampledTake& pTake) const;

    bool WriteAll();
    bool WriteBvhs(const KConvertOutput& pOutput);
    bool WriteBvh(const std::string& pPath, const KSampledTake& pTake);
    bool WriteGlb(const KConvertOutput& pOutput);
    bool WriteGltf(const KConvertOutput& pOutput);
    bool WriteAcclaim();
    bool WriteMotion(const std::string& pPath, const KSampledTake& pTake, qexsdk::KQexAsfScene* pSkeleton,
                     const qexsdk::KQexAmcSkeletonNotes& pNotes);
    bool WriteSkeletonAndMotions(const KConvertOutput& pAsf, const KConvertOutput* pAmc);
    bool Commit();

    qexsdk::KQexGltfWriteOptions     GltfOptions() const;
    qexsdk::KQexExportAcclaimOptions AcclaimOptions(const KSampledTake& pTake);
    qexsdk::KQexAsfSceneOwner        ReadSkeleton(const std::string& pPath, qexsdk::KQexAmcSkeletonNotes& pNotes);
    bool                             ReportExport(const qexsdk::KQexExportAcclaimResult& pResult);
    const KConvertOutput*            FindTarget(EOutputKind pKind) const;

    const KConvertOptions&    mOptions;
    qexsdk::KQexFigure&       mFigure;
    std::vector<std::string>  mInputs;
    KConsole&                 mConsole;
    std::vector<KSampledTake> mTakes; ///< At least one.

    std::vector<std::unique_ptr<qexsdk::KQexFileBvh>> mBvhs;    ///< Prepared, not yet committed.
    std::vector<std::unique_ptr<qexsdk::KOutputFile>> mOutputs; ///< The same, of all other formats.
};

} // namespace asfapp

#endif
