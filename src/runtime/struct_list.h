#pragma once
// Contract. A list of records whose count stands elsewhere in the owning record; nothing stands between the elements.

#include "runtime/list.h"

template <class T>
class ZnStructList : public ZnDList<T> {
 public:
  using ZnDList<T>::ZnDList;

  // Takes exactly `count` elements in place of those that were there; fails at the first that isn't there. The count is
  // the peer's word, so room is only ever made for elements that were read.
  template <class Reader>
  bool Read(Reader& in, size_t count) {
    this->Flush();
    if (count > in.Remaining()) return in.Fail();
    for (; count > 0; count--) {
      T element;
      if (!in.Record(element)) return false;
      this->Append(std::move(element));
    }
    return true;
  }
  template <class Writer>
  bool Write(Writer& out) const {
    for (const T& element : *this) out.Record(element);
    return true;
  }
};
