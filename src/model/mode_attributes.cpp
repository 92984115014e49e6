#include "model/mode_attributes.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr uint32_t kWriteBits = 0222;

// Attributes that a share may tie to bits of the mode; a mask of 0 ties none.
constexpr struct {
  bool ZnSMBCFileAttributes::*attribute;
  int32_t ZnSMBNFSShareConfig::*mask;
} kTied[] = {
    {&ZnSMBCFileAttributes::hidden, &ZnSMBNFSShareConfig::hidden},
    {&ZnSMBCFileAttributes::system, &ZnSMBNFSShareConfig::system},
    {&ZnSMBCFileAttributes::archive, &ZnSMBNFSShareConfig::archive},
};

}  // namespace

uint32_t ZnModeOfAttributes(const ZnSMBCFileAttributes& attributes, const ZnSMBNFSShareConfig& config) {
  auto mode = static_cast<uint32_t>(config.unixperms);
  if (attributes.read_only) mode &= ~kWriteBits;
  for (const auto& [attribute, mask] : kTied) {
    const auto bits = static_cast<uint32_t>(config.*mask);
    mode = attributes.*attribute ? mode | bits : mode & ~bits;
  }
  return mode;
}

ZnSMBCFileAttributes ZnAttributesOfMode(uint32_t mode, const ZnSMBCFileAttributes& present,
                                        const ZnSMBNFSShareConfig& config) {
  ZnSMBCFileAttributes wanted = present;
  const bool writable = (mode & kWriteBits) != 0;
  if (writable || !config.nosetreadonly) wanted.read_only = !writable;
  for (const auto& [attribute, mask] : kTied) {
    const auto bits = static_cast<uint32_t>(config.*mask);
    if (bits != 0) wanted.*attribute = (mode & bits) != 0;
  }
  return wanted;
}

bool ZnModeCounts(const ZnSMBCFileAttributes& present, const ZnSMBNFSShareConfig& config) {
  return present.read_only || !config.nosetreadonly ||
         std::any_of(std::begin(kTied), std::end(kTied), [&](const auto& tied) { return config.*tied.mask != 0; });
}
