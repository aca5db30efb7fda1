#ifndef APPS_ASF_REPORT_JSONTEXT_H
#define APPS_ASF_REPORT_JSONTEXT_H

#include <apps/asf/console.h>
#include <apps/asf/figure/point.h>
#include <qexfigure/check/kqexfilemessages.h>

#include <nlohmann/json.hpp>

#include <string>

namespace asfapp
{

using KJson = nlohmann::ordered_json;

/// Version of the JSON objects; incremented when a key changes its meaning or is removed.
constexpr int kJsonSchema = 1;

/// The list of messages.
KJson JsonMessages(const qexsdk::KQexFileMessages& pMessages);

/// The common head of all objects: schema, kind, file, ok, first error, counts and list of messages.
KJson JsonHead(const char* pKind, const std::string& pPath, bool pOk, const qexsdk::KQexFileMessages& pMessages);

/// A path: a string, or {"hex": its bytes} if it is not valid UTF-8.
KJson JsonPath(const std::string& pPath);

/// The path that JsonPath() made \p pValue of. False if that is none.
bool PathFromJson(const KJson& pValue, std::string& pPath);

/// The word for a kind of input: "skeleton", "motion" or "figure".
const char* JsonKind(const qexsdk::KQexFigureFile& pFile);

KJson JsonPoint(const KPoint& pPoint);

/// \p pObject on one line, with its end. U+FFFD replaces bytes that are not valid UTF-8.
std::string JsonLine(const KJson& pObject);

/// Prints JsonLine().
void PrintJsonLine(const KJson& pObject, KConsole& pConsole);

} // namespace asfapp

#endif
