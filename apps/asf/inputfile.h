#ifndef APPS_ASF_INPUTFILE_H
#define APPS_ASF_INPUTFILE_H

#include <apps/asf/console.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <string>

namespace asfapp
{

/// What a file holds, judged by its first lines, else by its name.
enum EFileKind
{
    eKIND_ASF, ///< A skeleton, or text that is nothing else.
    eKIND_AMC, ///< A motion.
    eKIND_BVH, ///< Skeleton and motion in one, of another format.
    eKIND_GLTF ///< The same as a binary file (GLB) or as JSON.
};

/// One input of a command: a path, or "-" for standard input. What cannot be read twice (standard input, pipes, devices) is kept
/// in memory, so that every input can be looked at as often as needed.
class KInputFile
{
public:
    /// Looks at the file. False when it cannot be read or holds nothing to work on; the reason was told to \p pConsole.
    bool Open(const std::string& pPath, KConsole& pConsole);

    /// As Open(), for commands that read skeletons and motions of this format alone: any other is refused, which is said too.
    bool OpenAcclaim(const std::string& pPath, KConsole& pConsole);

    /// Opens the file for \p pReader. False when that fails; the reader's messages tell why.
    bool OpenFor(qexsdk::KQexTextFile& pReader) const;

    /// The file for the importer. Refers to this object's memory.
    qexsdk::KQexAcclaimSource GetSource() const;

    /// True when reading through the file meets a failure of the system, not of the file's text.
    bool FailsToRead() const;

    const std::string& GetPath() const { return mPath; }

    /// The path for messages.
    std::string GetShown() const { return ShownPath(mPath); }

    EFileKind GetKind() const { return mKind; }

    /// Takes the file for \p pKind, whatever it looks like.
    void SetKind(EFileKind pKind) { mKind = pKind; }

    /// True when the bytes are held in memory: GetBytes().
    bool               IsInMemory() const { return mInMemory; }
    const std::string& GetBytes() const { return mBytes; }

private:
    bool Load(KConsole& pConsole);
    bool Sniff(const std::string& pHead, bool pWhole, KConsole& pConsole);

    std::string mPath;
    std::string mBytes;
    bool        mInMemory = false;
    EFileKind   mKind = eKIND_ASF;
};

/// True when both paths lead to the same file, through links as well. "-" and files that do not exist are no file.
bool IsSameFile(const std::string& pOne, const std::string& pOther);

/// The extension in lower case with its dot, "" without one.
std::string LowerExtension(const std::string& pPath);

} // namespace asfapp

#endif
