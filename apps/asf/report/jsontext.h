#ifndef APPS_ASF_REPORT_JSONTEXT_H
#define APPS_ASF_REPORT_JSONTEXT_H

#include <apps/asf/figure/skeletonfile.h>

#include <nlohmann/json.hpp>

#include <string>

namespace asfapp
{

using KJson = nlohmann::ordered_json;

/// Version of the objects that `info --json` prints; counts up when a key changes its meaning or goes away.
constexpr int kJsonSchema = 1;

/// What every object begins with: schema, kind, file, ok, messages.
KJson JsonHead(const char* pKind, const std::string& pPath, bool pOk, const KMessages& pMessages);

KJson JsonPoint(const KPoint& pPoint);

/// Prints \p pObject on one line. Bytes that are no UTF-8 come out as U+FFFD.
void PrintJsonLine(const KJson& pObject, KConsole& pConsole);

} // namespace asfapp

#endif
