#ifndef APPS_ASF_BATCH_GATHER_H
#define APPS_ASF_BATCH_GATHER_H

#include <apps/asf/batch/batchoptions.h>

namespace asfapp
{

/// Adds up the manifests below an OUTDIR: how many motions were made and failed, which outputs are missing or were changed, and with
/// inputs, which motions no run has done. Raises the exit status unless all is there.
void GatherBatch(const KBatchOptions& pOptions, KConsole& pConsole);

} // namespace asfapp

#endif
