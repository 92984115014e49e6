#pragma once
// The chained list of XDR: a true word before each element, a false word behind the last.

#include "rpc/xdr.h"

template <class T>
struct ZnNFSList : ZnDList<T>, ZnXdrRecord<ZnNFSList<T>> {
  using ZnDList<T>::ZnDList;

  template <class Io>
  bool Fields(Io& io) {
    if constexpr (Io::kReading) {
      this->Flush();
      bool more = false;
      while (io.Bool(more) && more) {
        T element;
        if (!io.Record(element)) return false;
        this->Append(std::move(element));
      }
      return io.Ok();
    } else {
      for (const T& element : *this) io.Bool(true) && io.Record(element);
      return io.Bool(false);
    }
  }
  bool operator==(const ZnNFSList& other) const { return static_cast<const ZnDList<T>&>(*this) == other; }
};
