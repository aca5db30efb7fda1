#include <qexioplugins/gltf/kqexgltfjsonwriter.h>

#include <qexioplugins/gltf/kqexgltfnames.h>

#include <charconv>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr const char* kHexDigits = "0123456789abcdef";

template <typename TNumber>
void AppendNumber(std::string& pOut, TNumber pValue)
{
    char       lText[32];
    const auto lEnd = std::to_chars(lText, lText + sizeof lText, pValue);
    pOut.append(lText, lEnd.ptr);
}

} // namespace

void KQexGltfJsonWriter::Begin(char pBracket)
{
    Separate();
    mOut += pBracket;
    ++mDepth;
    mIsFirst = true;
}

void KQexGltfJsonWriter::End(char pBracket)
{
    --mDepth;
    if (!mIsFirst)
    {
        BreakLine();
    }
    mOut += pBracket;
    mIsFirst = false;
}

/// Writes the comma and line break between two values; nothing after a key.
void KQexGltfJsonWriter::Separate()
{
    if (mHasKey)
    {
        mHasKey = false;
        return;
    }
    if (!mIsFirst)
    {
        mOut += ',';
    }
    if (mDepth > 0)
    {
        BreakLine();
    }
    mIsFirst = false;
}

void KQexGltfJsonWriter::BreakLine()
{
    if (mIsIndented)
    {
        mOut += '\n';
        mOut.append(mDepth, ' ');
    }
}

void KQexGltfJsonWriter::Key(std::string_view pKey)
{
    Separate();
    Quote(pKey);
    mOut += mIsIndented ? ": " : ":";
    mHasKey = true;
}

void KQexGltfJsonWriter::Text(std::string_view pText)
{
    Separate();
    Quote(pText);
}

void KQexGltfJsonWriter::Quote(std::string_view pText)
{
    const bool lIsUtf8 = IsUtf8(pText);
    mOut += '"';
    for (const char lC : pText)
    {
        const unsigned char lByte = static_cast<unsigned char>(lC);
        if (lC == '"' || lC == '\\')
        {
            mOut += '\\';
            mOut += lC;
        }
        else if (lByte < 0x20)
        {
            mOut += "\\u00";
            mOut += kHexDigits[lByte >> 4];
            mOut += kHexDigits[lByte & 15];
        }
        else
        {
            mOut += lByte > 127 && !lIsUtf8 ? '?' : lC;
        }
    }
    mOut += '"';
}

void KQexGltfJsonWriter::Number(double pValue)
{
    Separate();
    if (std::isfinite(pValue))
    {
        AppendNumber(mOut, pValue);
    }
    else
    {
        mOut += "null";
    }
}

void KQexGltfJsonWriter::Count(size_t pValue)
{
    Separate();
    AppendNumber(mOut, pValue);
}

void KQexGltfJsonWriter::Index(int pValue)
{
    Separate();
    AppendNumber(mOut, pValue);
}

} // namespace qexsdk
