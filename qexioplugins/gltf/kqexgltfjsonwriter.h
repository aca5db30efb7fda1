#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFJSONWRITER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFJSONWRITER_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace qexsdk
{

/// Appends JSON to a string, value by value. Needs no tree of JSON values, whose destruction may itself need memory: when memory runs
/// out, a truncated text is all that is left.
class QEX_API KQexGltfJsonWriter
{
public:
    /// \param pOut        receives the text; must outlive the writer
    /// \param pIsIndented one value per line; otherwise everything on one line
    KQexGltfJsonWriter(std::string& pOut, bool pIsIndented) : mOut(pOut), mIsIndented(pIsIndented) {}

    /// \name Containers. In an object, write a key before each value.
    ///@{
    void BeginObject() { Begin('{'); } ///< Begins an object.
    void EndObject() { End('}'); }     ///< Ends the innermost object.
    void BeginArray() { Begin('['); }  ///< Begins an array.
    void EndArray() { End(']'); }      ///< Ends the innermost array.
    void Key(std::string_view pKey);   ///< Writes the key of the next value, quoted like Text().
    ///@}

    /// Writes a UTF-8 string. If \p pText is not valid UTF-8, its bytes above 127 become question marks.
    void Text(std::string_view pText);

    /// Writes the shortest number that reads back as \p pValue; null when it is not finite.
    void Number(double pValue);

    /// Writes a count.
    void Count(size_t pValue);
    /// Writes an index or another integer.
    void Index(int pValue);

private:
    void Begin(char pBracket);
    void End(char pBracket);
    void Separate();
    void BreakLine();
    void Quote(std::string_view pText);

    std::string& mOut;
    bool         mIsIndented;
    size_t       mDepth = 0;
    bool         mIsFirst = true; ///< The innermost container is empty so far.
    bool         mHasKey = false; ///< A key was written, its value was not.
};

} // namespace qexsdk

#endif
