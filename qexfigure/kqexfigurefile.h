#ifndef QEXFIGURE_KQEXFIGUREFILE_H
#define QEXFIGURE_KQEXFIGUREFILE_H

#include <qexfigure/kqexfigurereport.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <memory>
#include <string>
#include <string_view>

/// \file
/// One input file of a figure: opened, its format detected, ready to be read any number of times.

namespace qexsdk
{

/// Format of a file.
enum KQexFigureFormat
{
    eFIGURE_ASF, ///< A skeleton; also any text that is nothing else.
    eFIGURE_AMC, ///< A motion, which needs an ASF skeleton.
    eFIGURE_BVH, ///< Skeleton and motion in one file.
    eFIGURE_GLTF ///< The same, as binary (GLB) or JSON.
};

/// An input: a path, standard input ("-") or bytes in memory. The format is detected from the contents, else from the extension. Input
/// that cannot be reread (standard input, pipes, devices) is read into memory, so that every input can be read several times; of other
/// files only the start is read here. Copies share the bytes.
class QEX_API KQexFigureFile
{
public:
    /// The most bytes that Open() reads into memory.
    static constexpr size_t kMemoryLimit = size_t(1) << 30;

    /// Opens \p pPath and detects its format. False, with an error in \p pReport, if it cannot be read, is empty, is binary data of no
    /// known format, or exceeds kMemoryLimit and cannot be reread. The object is then of no use until another file is opened with it.
    bool Open(const std::string& pPath, KQexFigureReport& pReport) noexcept;

    /// Takes \p pBytes as the contents of a file; \p pName replaces its path, also for detecting the format, and, if it names a folder, for
    /// the files that belong to it. False as for Open().
    bool OpenBuffer(std::string pBytes, const std::string& pName, KQexFigureReport& pReport) noexcept;

    /// The path, or the buffer's name.
    const std::string& GetPath() const { return mPath; }

    /// The path for messages: "<stdin>" for "-".
    const std::string& GetDisplayPath() const { return mDisplayPath; }

    /// The format, detected or set.
    KQexFigureFormat GetFormat() const { return mFormat; }

    /// Overrides the detected format: "asf", "amc", "bvh", "glb" or "gltf". False, with nothing changed, for another word.
    bool SetFormat(std::string_view pWord);

    /// True for formats that hold both skeleton and motion.
    bool HasOwnMotion() const { return mFormat == eFIGURE_BVH || mFormat == eFIGURE_GLTF; }

    /// True if the whole file is in memory; only then GetBytes() has its bytes.
    bool IsInMemory() const { return mBytes != nullptr; }

    /// The bytes of a file in memory, "" for any other. Valid as long as this object or a copy of it.
    std::string_view GetBytes() const { return mBytes != nullptr ? std::string_view(*mBytes) : std::string_view(); }

    /// Opens the file in \p pReader. False if that fails; the reader's messages have the reason. A reader of a file in memory must
    /// not outlive this object and its copies.
    bool OpenFor(KQexTextFile& pReader) const;

    /// The file for the Acclaim importer; refers to the bytes of this object. An empty path when memory runs out.
    KQexAcclaimSource GetSource() const noexcept;

    /// Reads the whole file; true if that fails with an I/O error. Distinguishes an I/O error from invalid contents after a reader has
    /// failed.
    bool FailsToRead() const;

private:
    bool Load(KQexFigureReport& pReport);
    bool Detect(std::string_view pHead, bool pIsWhole, KQexFigureReport& pReport);

    std::string                        mPath;
    std::string                        mDisplayPath;
    std::shared_ptr<const std::string> mBytes; ///< Null unless the file is in memory.
    KQexFigureFormat                   mFormat = eFIGURE_ASF;
};

} // namespace qexsdk

#endif
