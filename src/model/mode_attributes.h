#pragma once
// What a mode of NFS and the attributes of Windows say of each other, by a share's settings.

#include "config/share_config.h"
#include "smb/wire/encodings.h"

// The permission bits that show the attributes.
uint32_t ZnModeOfAttributes(const ZnSMBCFileAttributes& attributes, const ZnSMBNFSShareConfig& config);

// What `mode` makes of the attributes that are `present`. Those that no bits of a mode stand for stay.
ZnSMBCFileAttributes ZnAttributesOfMode(uint32_t mode, const ZnSMBCFileAttributes& present,
                                        const ZnSMBNFSShareConfig& config);

// Whether there is any mode that would change something.
bool ZnModeCounts(const ZnSMBCFileAttributes& present, const ZnSMBNFSShareConfig& config);
