#include "netbios/nbt_ns_datagram.h"

#include <algorithm>

#include "netbios/smb_encoding.h"

ZnMachine ZnNBTNSDatagramNode::Machine() const {
  auto end = std::find(name.begin(), name.end(), 0);
  auto length = static_cast<size_t>(end - name.begin());
  return {ZnUniString::CreateFrom(name.data(), length, ZnSmbEncoding::netbiosname), type};
}

bool ZnNBTNSDatagramResource::SizedData(ZnWireReader& io) {
  uint16_t length = 0;
  ZnByteBuffer bytes;
  if (!io.U16be(length) || !io.Bytes(bytes, length)) return false;
  ZnWireReader data(bytes);
  bool exact = type != ZnNBTNSType::A || length == ZnNBTNSDatagramPlainAddress::kSize;
  return (exact && Data(data)) || io.Fail();
}

bool ZnNBTNSDatagramResource::SizedData(ZnWireWriter& io) {
  ZnByteBuffer bytes;
  ZnWireWriter data(bytes);
  Data(data);
  return io.U16be(bytes.Length()) && io.Rest(bytes);
}

bool ZnNBTNSDatagramResource::ReadAddresses(ZnWireReader& data) {
  const size_t length = data.Remaining();
  if (length % ZnNBTNSDatagramAddress::kSize == 0) return addresses.Read(data, length / ZnNBTNSDatagramAddress::kSize);
  if (length % ZnNBTNSDatagramPlainAddress::kSize != 0) return data.Fail();
  return mh_addresses.Read(data, length / ZnNBTNSDatagramPlainAddress::kSize);
}
