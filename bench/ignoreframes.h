#ifndef BENCH_IGNOREFRAMES_H
#define BENCH_IGNOREFRAMES_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

namespace qexbench
{

/// Lets a motion be read to its end and keeps nothing of it.
class KIgnoreFrames : public qexsdk::KQexAmcVisitor
{
public:
    bool Frame(const qexsdk::KQexAmcFrame&) override { return true; }
};

} // namespace qexbench

#endif
