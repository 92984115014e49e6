#pragma once
// Names by small numbers, called atoms. Several names may share an atom; WhatIs gives the first of them.

#include <string>
#include <unordered_map>

#include "runtime/uni_string.h"

class ZnCStringRegistry {
 public:
  using Atom = unsigned;

  explicit ZnCStringRegistry(Atom invalid) : invalid_(invalid) {}

  // Stores a name under an atom. A name that is there already keeps its atom.
  void Set(const char* name, Atom atom);
  // The atom of a name. An unknown one gets the next free atom, counted from 1000, if it is to be added; the invalid
  // atom otherwise.
  Atom Get(const char* name, bool add);
  // The name of an atom, as ASCII; false when the atom isn't there.
  bool WhatIs(Atom atom, ZnUniString& name) const;
  bool WhatIs(Atom atom, ZnByteBuffer& name) const;

 private:
  static constexpr Atom kFirstFree = 1000;

  std::unordered_map<std::string, Atom> atoms_;
  std::unordered_map<Atom, std::string> names_;
  Atom invalid_;
  Atom next_ = kFirstFree;
};
