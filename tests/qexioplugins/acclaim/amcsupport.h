#ifndef TESTS_QEXIOPLUGINS_ACCLAIM_AMCSUPPORT_H
#define TESTS_QEXIOPLUGINS_ACCLAIM_AMCSUPPORT_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <vector>

/// \file
/// Small skeletons and motions as text, and the results of reading them as text.

namespace qextest
{

/// A skeleton in centimetres and degrees: root (tx), its children a (rx ry) and d (no DOF), a's child b (rx), b's child c (rz l ry).
extern const char* const kSmallAsf;

/// One frame for it: its number, then each bone with DOFs with values that count up from \p pValue; the value of l is 99.
std::string SmallFrame(long long pNumber, double pValue);

/// Messages as "W3 text", one per line.
std::string Texts(const std::vector<qexsdk::KQexTextMessage>& pMessages);
std::string Texts(const std::vector<qexsdk::KQexImportMessage>& pMessages);

/// Reads a skeleton's text. A failure fails the test and gives null.
qexsdk::KQexAsfSceneOwner ReadSmallAsf(const std::string& pText, qexsdk::KQexImportAcclaimResult& pResult,
                                       const qexsdk::KQexImportAcclaimOptions& pOptions = {});

/// Logs the frames that a motion reader visits, one per line: number, time in 1/120 s, "late" if it is, then each bone of the frame with
/// its values.
class KFrameLog : public qexsdk::KQexAmcVisitor
{
public:
    bool Frame(const qexsdk::KQexAmcFrame& pFrame) override;

    std::string mText;
    int         mStopAfter = -1; ///< Frames after which it stops the reader; negative: never.
    double      mLengthFactor = 0.0;
    double      mAngleFactor = 0.0;
    long long   mCount = 0;
};

} // namespace qextest

#endif
