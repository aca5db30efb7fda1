#ifndef QEXFIGURE_CHECK_KQEXASFLINT_H
#define QEXFIGURE_CHECK_KQEXASFLINT_H

#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace qexsdk
{

/// Finds problems in a skeleton file that its reader accepts silently: bones missing from the hierarchy, lower limits above the upper
/// ones, extra text on a line. It parses the text like the reader, section by section, and stops where the reader stops. Not
/// thread-safe: it uses the reader's keyword tables, so Run() is called under AsfReaderLock().
class KQexAsfLint : public KQexTextFile
{
public:
    KQexAsfLint();

    /// Parses the open file.
    void Run();

    /// The findings, sorted by line: only warnings, at most KQexTextFile::kMaxMessages.
    const std::vector<KQexTextMessage>& GetFindings() const { return mFindings; }

    /// Number of findings, including those beyond the maximum.
    int GetFindingCount() const { return mFindingCount; }

    /// Why the reader stops without an error: what is missing, and the line where its section began. Empty if it does not stop.
    const std::string& GetStopText() const { return mStopText; }
    /// That line, from 1.
    int GetStopLine() const { return mStopLine; }

private:
    struct KBone
    {
        std::string mName;
        int         mLine = 0;        ///< The line of its name.
        bool        mIsChild = false; ///< A family line names it as a child.
        std::string mParent;          ///< The first parent in a family line, the root excluded.
    };

    /// The lines of a bone group read so far.
    struct KGroup
    {
        std::string      mName;
        int              mNameLine = 0;
        int              mDirectionLine = 0;
        bool             mZeroDirection = false;
        bool             mHasLength = false;
        std::vector<int> mCodes;
    };

    void AddFinding(int pLine, const char* pFormat, ...) QEX_PRINTF(3, 4);
    void Stop(int pLine, const std::string& pText);
    void StopAtEnd(int pLine, const char* pWord);
    void ReportExtraText();
    void Skip();

    bool Dispatch(int pSection, int pLine);
    bool Version();
    bool Name(int pLine);
    bool Units(int pLine, const char* pWord);
    void Unit(int pUnit);
    bool Documentation(int pLine);
    bool Root(int pLine);
    bool RootLine(int pWord, int& pAxis, int& pAxisLine, double* pAngles);
    void ReadDofs(KToken* pTable, std::vector<int>& pCodes);
    bool BoneData(int pLine);
    bool Bone(int pLine);
    bool BoneLine(int pWord, KGroup& pGroup);
    bool BoneName(KGroup& pGroup);
    bool BoneAxis();
    bool Limits(const KGroup& pGroup);
    void EndBone(const KGroup& pGroup);
    void CheckAxis(int pLine, int pWord, const double* pAngles);
    bool Hierarchy();
    void Family();
    void Child(const std::string& pParent, const std::string& pName);
    void Skin();
    void Finish();

    std::vector<KBone>                      mBones;
    std::unordered_map<std::string, size_t> mByName; ///< Index of the first bone of each name.
    bool                                    mHasRoot = false;
    bool                                    mHasHierarchy = false;
    std::vector<KQexTextMessage>            mFindings;
    int                                     mFindingCount = 0;
    std::string                             mStopText;
    int                                     mStopLine = 0;
};

} // namespace qexsdk

#endif
