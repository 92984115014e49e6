#include "session/share_paths.h"

#include "model/mode_attributes.h"
#include "model/name_mapping.h"
#include "model/node.h"
#include "model/told_attributes.h"

ZnSMBNFSTree* ZnTreeOf(const ZnSMBNFSNode* node) { return node && node->sharenode ? node->sharenode->tree : nullptr; }

std::unique_ptr<ZnSMBCFileObject> ZnFileAt(const ZnSMBNFSTree& tree, const ZnUniString& path) {
  auto object = std::make_unique<ZnSMBCFileObject>(tree, InternalToWindowsPath(path, tree.config));
  object->created = object->accessed = object->modified = ZnTimeVal();
  return object;
}

// A new file whose mode isn't told has the share's.
ZnSMBCFileAttributes ZnAttribsToSet(const ZnSMBNFSCommand& command, const ZnSMBNFSTree& tree,
                                    const ZnSMBCFileAttributes& present) {
  const auto mode = ZnToldMode(command.sattr).value_or(static_cast<uint32_t>(tree.config.unixperms));
  return ZnAttributesOfMode(mode, present, tree.config);
}
