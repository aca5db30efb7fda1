#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCREADER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCREADER_H

#include <qexioplugins/acclaim/amc/kqexamcbones.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qexsdk
{

/// One read of a motion file: lines into frames, frames to a visitor.
class KQexAmcReader
{
public:
    /// Reads from the open \p pFile. Owns none of the arguments; they must outlive this.
    KQexAmcReader(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcReadOptions& pOptions, KQexAmcVisitor& pVisitor,
                  KQexAmcHeader& pHeader, KQexAmcInfo& pInfo);

    /// Reads until the end, the first error or a request to stop. True when there are frames to keep.
    bool Run();

private:
    bool ReadLines();
    bool LeaveFrame();
    bool ReadLine();
    bool ReadWord(std::string_view pWord, std::string_view pRest);
    bool ReadFrameLine(long long pNumber, std::string_view pRest);
    bool ReadBoneLine(std::string_view pName, const char* pText, const char* pEnd);
    bool ReadValues(const KQexAmcLine& pLine, const char*& pText, const char* pEnd);
    bool FailValue(const KQexAmcLine& pLine, int pIndex, std::string_view pToken, bool pAtEnd);
    void MarkPresent(KQexAmcLine& pLine);
    int  FindLine(std::string_view pName);
    void WarnUnknown(std::string_view pName);
    bool IsFirstWarning(std::string_view pWhat);
    bool FailFrameNumber(std::string_view pToken);

    bool BeginFrames();
    void WarnAboutRates();
    bool ComputeTime(long long pNumber, KTime& pTime) const;
    bool CommitFrame();
    bool IsCutShort() const;
    void FinishFile();
    void FinishMatch();
    void WarnAbsent();
    bool ReportProgress();

    KQexFileAcclaimAmc&       mFile;
    KQexAsfScene*             mAsfScene;
    const KQexAmcReadOptions& mOptions;
    KQexAmcVisitor&           mVisitor;
    KQexAmcHeader&            mHeader;
    KQexAmcInfo&              mInfo;

    KQexAmcBones     mBones;
    KQexAmcFrame     mFrame; ///< The frame in progress.
    bool             mInFrame = false;
    bool             mIsLeaving = false;  ///< After an error: no line matters until the next frame number.
    bool             mStopped = false;    ///< The visitor or the progress function asked to stop, or the caller's rate is invalid.
    double           mTicks = 0;          ///< Ticks per frame.
    long long        mPreviousNumber = 0; ///< Number of the previous frame.
    int              mLine = -1;          ///< Index of the bone line read last, -1 for none.
    bool             mCutShort = false;   ///< The end of the file cut the last line short.
    std::vector<int> mPresent;            ///< Bones of the frame in progress, as KQexAmcFrame::mPresent.
    std::vector<int> mPreviousPresent;    ///< Bones of the previous frame.
    std::vector<int> mAlwaysPresent;      ///< Bones present in every frame so far.

    std::set<std::string, std::less<>> mWarned;           ///< Names and words that were warned about.
    size_t                             mUnknownNames = 0; ///< Names among them that the skeleton does not have.
};

} // namespace qexsdk

#endif
