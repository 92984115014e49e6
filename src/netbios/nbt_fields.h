#pragma once
// Field forms that the records of NetBIOS packets share.

#include "runtime/inet_addr.h"
#include "runtime/struct_list.h"
#include "runtime/wire.h"

namespace ZnNBTFields {

// An IPv4 address; the port isn't on the wire and is 0 after reading.
template <class Io>
bool Address(Io& io, ZnInetAddr& address) {
  uint32_t number = address.AsUint32();
  if (!io.U32be(number)) return false;
  if constexpr (Io::kReading) address = ZnInetAddr(number);
  return true;
}

// As many records as `count` says when reading, all of them when writing.
template <class Io, class T>
bool List(Io& io, ZnStructList<T>& list, size_t count) {
  if constexpr (Io::kReading) {
    return list.Read(io, count);
  } else {
    return list.Write(io);
  }
}

}  // namespace ZnNBTFields
