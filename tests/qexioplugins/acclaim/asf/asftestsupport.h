#ifndef TESTS_QEXIOPLUGINS_ACCLAIM_ASF_ASFTESTSUPPORT_H
#define TESTS_QEXIOPLUGINS_ACCLAIM_ASF_ASFTESTSUPPORT_H

#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <string>
#include <string_view>
#include <vector>

/// \file
/// Reading skeletons in tests: one call from a text to all results.

namespace qextest
{

/// A scene and the reader's messages. Owns the scene.
class KAsfReading
{
public:
    KAsfReading();
    ~KAsfReading();
    KAsfReading(const KAsfReading&) = delete;
    KAsfReading& operator=(const KAsfReading&) = delete;

    /// Reads \p pText into the scene; may be called again.
    bool ReadText(std::string_view pText, bool pRemoveDummyNodes = false, bool pSetRotatePivotOffet = false, bool pSetPreRotation = false);

    /// The bone of that name; null when there is none.
    qexsdk::HKQexAsfNode Bone(const char* pName) const;

    /// The messages, one per line, as "W3 text" or "E3 text".
    std::string Messages() const;

    /// The bones in pre-order, one line each: "name<parent".
    std::string Tree() const;

    bool                                 mOk = false;
    qexsdk::KQexAsfScene*                mScene;
    std::vector<qexsdk::KQexTextMessage> mMessages;
    int                                  mWarningCount = 0;
    int                                  mErrorCount = 0;
};

/// \p pScene written as text.
std::string WrittenText(qexsdk::HKQexAsfScene pScene);

/// "W3 text" or "E3 text".
std::string MessageLine(const qexsdk::KQexTextMessage& pMessage);

/// \p pRoot and its descendants in pre-order.
std::vector<qexsdk::HKQexAsfNode> PreOrder(qexsdk::HKQexAsfNode pRoot);

} // namespace qextest

#endif
