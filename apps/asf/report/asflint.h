#ifndef APPS_ASF_REPORT_ASFLINT_H
#define APPS_ASF_REPORT_ASFLINT_H

#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace asfapp
{

/// Looks over the text of a skeleton file for what its reader takes without a word, though a user would want to know: bones that
/// the hierarchy leaves out, limits the wrong way round, words left over on a line. It walks the text as the reader does, section
/// by section, and stops where the reader stops. Uses the reader's keyword tables: one at a time in a process, and not while a
/// skeleton is read.
class KAsfLint : public qexsdk::KQexTextFile
{
public:
    KAsfLint();

    /// Walks the open file once.
    void Run();

    /// What was found, by line: warnings only, at most KQexTextFile::kMaxMessages of them.
    const std::vector<qexsdk::KQexTextMessage>& GetFindings() const { return mFindings; }

    /// Number of findings, those beyond the kept ones included.
    int GetFindingCount() const { return mFindingCount; }

    /// Why a reader that reported no error gives up: what is missing, and on which line its section began. Empty when it does not.
    const std::string& GetStopText() const { return mStopText; }
    int                GetStopLine() const { return mStopLine; }

private:
    struct KBone
    {
        std::string mName;
        int         mLine = 0;        ///< Of its name.
        bool        mIsChild = false; ///< A family line names it as a child.
        std::string mParent;          ///< The first parent, other than the root, that a family line gave it.
    };

    // What a bone group said so far.
    struct KGroup
    {
        std::string      mName;
        int              mNameLine = 0;
        int              mDirectionLine = 0;
        bool             mZeroDirection = false;
        bool             mHasLength = false;
        std::vector<int> mCodes;
    };

    void Find(int pLine, const char* pFormat, ...) QEX_PRINTF(3, 4);
    void Stop(int pLine, const std::string& pText);
    void StopAtEnd(int pLine, const char* pWord);
    void LeftOver();
    void Skip();

    bool Dispatch(int pSection, int pLine);
    bool Version();
    bool Name(int pLine);
    bool Units(int pLine, const char* pWord);
    void Unit(int pUnit);
    bool Documentation(int pLine);
    bool Root(int pLine);
    bool RootLine(int pWord, int& pAxis, int& pAxisLine, double* pAngles);
    void Channels(qexsdk::KToken* pTable, std::vector<int>& pCodes);
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
    std::unordered_map<std::string, size_t> mByName; ///< First bone of each name.
    bool                                    mHasRoot = false;
    bool                                    mHasHierarchy = false;
    std::vector<qexsdk::KQexTextMessage>    mFindings;
    int                                     mFindingCount = 0;
    std::string                             mStopText;
    int                                     mStopLine = 0;
};

} // namespace asfapp

#endif
