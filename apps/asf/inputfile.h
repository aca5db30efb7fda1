#ifndef APPS_ASF_INPUTFILE_H
#define APPS_ASF_INPUTFILE_H

#include <apps/asf/console.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <string>

namespace asfapp
{

/// Format of a file, detected from its first lines, else from its extension.
enum EFileKind
{
    eKIND_ASF, ///< A skeleton, or any other text.
    eKIND_AMC, ///< A motion.
    eKIND_BVH, ///< Skeleton and motion in one file.
    eKIND_GLTF ///< The same, as binary (GLB) or JSON.
};

/// An input of a command: a path, or "-" for standard input. Input that cannot be reread (standard input, pipes, devices) is kept
/// in memory, so that every input can be read several times.
class KInputFile
{
public:
    /// Opens the file and detects its format. False, after an error, if it cannot be read, is empty or is binary data of no known format.
    bool Open(const std::string& pPath, KConsole& pConsole);

    /// As Open(), for commands that read only ASF and AMC: any other format is an error, too.
    bool OpenAcclaim(const std::string& pPath, KConsole& pConsole);

    /// Opens the file for \p pReader. False if that fails; the reader's messages have the reason.
    bool OpenFor(qexsdk::KQexTextFile& pReader) const;

    /// The file for the importer. Refers to this object's memory.
    qexsdk::KQexAcclaimSource GetSource() const;

    /// Reads the whole file; true if that fails with an I/O error.
    bool FailsToRead() const;

    const std::string& GetPath() const { return mPath; }

    /// The path as shown in messages.
    std::string GetDisplayPath() const { return DisplayPath(mPath); }

    EFileKind GetKind() const { return mKind; }

    /// Overrides the detected format.
    void SetKind(EFileKind pKind) { mKind = pKind; }

    /// True if the file is in memory; only then GetBytes() has its bytes.
    bool               IsInMemory() const { return mInMemory; }
    const std::string& GetBytes() const { return mBytes; }

private:
    bool Load(KConsole& pConsole);
    bool Sniff(const std::string& pHead, bool pIsWhole, KConsole& pConsole);

    std::string mPath;
    std::string mBytes;
    bool        mInMemory = false;
    EFileKind   mKind = eKIND_ASF;
};

/// True if both paths lead to the same file, also through links. False for "-" and for files that do not exist.
bool IsSameFile(const std::string& pOne, const std::string& pOther);

/// The extension in lower case with its dot, "" without one.
std::string LowerExtension(const std::string& pPath);

} // namespace asfapp

#endif
