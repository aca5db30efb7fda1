#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFJSONWRITER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFJSONWRITER_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace qexsdk
{

/// Appends a JSON text to a string, value by value, without ever holding it in another form. Whatever throws for lack of memory
/// leaves nothing behind but a text that is cut off, which a tree of values would not promise: releasing one can take memory.
class QEX_API KQexGltfJsonWriter
{
public:
    /// \param pOut        receives the text; has to outlive the writer
    /// \param pIsIndented every value on a line of its own; else all of it on one line
    KQexGltfJsonWriter(std::string& pOut, bool pIsIndented) : mOut(pOut), mIsIndented(pIsIndented) {}

    /// \name Containers. An object's members are keys, each with the one value that follows.
    ///@{
    void BeginObject() { Begin('{'); } ///< Begins an object.
    void EndObject() { End('}'); }     ///< Ends the object begun last.
    void BeginArray() { Begin('['); }  ///< Begins an array.
    void EndArray() { End(']'); }      ///< Ends the array begun last.
    void Key(std::string_view pKey);   ///< The key of the next value, quoted as Text() is.
    ///@}

    /// Text in UTF-8; what is none has its bytes above 127 replaced by question marks.
    void Text(std::string_view pText);

    /// The shortest number that reads back as \p pValue; null when it is not finite, for which JSON has no word.
    void Number(double pValue);

    /// A number of things.
    void Count(size_t pValue);
    /// An index or another whole number.
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
    bool         mIsFirst = true; ///< The open container has nothing in it yet.
    bool         mHasKey = false; ///< A key waits for its value.
};

} // namespace qexsdk

#endif
