#ifndef TESTS_QEXIOPLUGINS_ACCLAIM_AMCSUPPORT_H
#define TESTS_QEXIOPLUGINS_ACCLAIM_AMCSUPPORT_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <vector>

/// \file
/// Small skeletons and motions as text, and what reading them gives, as text again.

namespace qextest
{

/// A skeleton of centimetres and degrees: root (tx), a (rx ry), b (rx), c (rz l ry), d without a DOF; a and d under the root, b
/// under a, c under b.
extern const char* const kSmallAsf;

/// One frame of it: number, then each bone with values that follow from \p pValue.
std::string SmallFrame(long long pNumber, double pValue);

/// Messages as "W3 text", one a line.
std::string Texts(const std::vector<qexsdk::KQexTextMessage>& pMessages);
std::string Texts(const std::vector<qexsdk::KQexImportMessage>& pMessages);

/// The scene of a skeleton's text. A text that cannot be read fails the test and gives null.
qexsdk::KQexAsfSceneOwner ReadSmallAsf(const std::string& pText, qexsdk::KQexImportAcclaimResult& pResult,
                                       const qexsdk::KQexImportAcclaimOptions& pOptions = {});

/// What a motion reader gave to its visitor, one line a frame: number, time in 1/120 s, "late" where it is, then each bone of the
/// frame with its values.
class KFrameLog : public qexsdk::KQexAmcVisitor
{
public:
    bool Frame(const qexsdk::KQexAmcFrame& pFrame) override;

    std::string mText;
    int         mStopAfter = -1; ///< Frames after which the visitor asks to stop; negative: never.
    double      mLengthFactor = 0.0;
    double      mAngleFactor = 0.0;
    long long   mCount = 0;
};

} // namespace qextest

#endif
