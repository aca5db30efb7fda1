#ifndef APPS_ASF_BATCH_CHECKSUM_H
#define APPS_ASF_BATCH_CHECKSUM_H

#include <cstdint>
#include <string>

namespace asfapp
{

/// CRC-32 of a file's bytes. False if it cannot be read.
bool ReadChecksum(const std::string& pPath, uint32_t& pSum);

} // namespace asfapp

#endif
