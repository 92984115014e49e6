#include "runtime/cstring_registry.h"

void ZnCStringRegistry::Set(const char* name, Atom atom) {
  if (atoms_.emplace(name, atom).second) names_.emplace(atom, name);
}

ZnCStringRegistry::Atom ZnCStringRegistry::Get(const char* name, bool add) {
  auto found = atoms_.find(name);
  if (found != atoms_.end()) return found->second;
  if (!add) return invalid_;
  Set(name, next_);
  return next_++;
}

bool ZnCStringRegistry::WhatIs(Atom atom, ZnByteBuffer& name) const {
  auto found = names_.find(atom);
  if (found == names_.end()) return false;
  name = ZnByteBuffer(found->second.data(), found->second.size());
  return true;
}

bool ZnCStringRegistry::WhatIs(Atom atom, ZnUniString& name) const {
  ZnByteBuffer bytes;
  if (!WhatIs(atom, bytes)) return false;
  name = ZnUniString::CreateFrom(bytes, ZnCodeset::Ascii);
  return true;
}
