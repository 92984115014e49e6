#pragma once
// A host as NetBIOS and SMB know it: a name of 15 characters, the type of service behind the name, and an address. A
// value.

#include <cstdint>

#include "runtime/inet_addr.h"
#include "runtime/uni_string.h"

class ZnMachine {
 public:
  static constexpr size_t kNameLength = 15;

  // The 16th byte of a NetBIOS name. Others than these are carried as they come.
  enum nameType : uint8_t { Workstation = 0x00, Messenger = 0x03, Server = 0x20 };

  ZnMachine() = default;
  ZnMachine(const ZnUniString& text, uint8_t type) { Name(text, type); }

  // Sets the name: cut or padded with blanks to 15 characters, and in upper case.
  void Name(const ZnUniString& text, uint8_t type);
  // Sets the name again with another type.
  void NameType(uint8_t type) { Name(name_, type); }
  // Sets the address, with its port.
  void Name(const ZnInetAddr& address) { address_ = address; }

  bool HasName() const { return (flags_ & kNameSet) != 0; }
  const ZnUniString& Name() const { return name_; }            // 15 characters, or empty when none was set
  const ZnUniString& ShortName() const { return shortName_; }  // without the blanks at the end
  uint8_t NameType() const { return type_; }
  const ZnInetAddr& Address() const { return address_; }

  // The name as it stands in packets (RFC 1001 section 14.1): a length, two letters "A" to "P" for each of the 16
  // bytes, and the empty label at the end; 34 characters. A character above 255 is sent as "?". Without a name only the
  // type's pair stands.
  ZnUniString EncodeRFC883() const;

  bool operator==(const ZnMachine&) const = default;

 private:
  static constexpr unsigned kNameSet = 8;

  unsigned flags_ = 0;
  ZnUniString name_;
  ZnUniString shortName_;
  ZnInetAddr address_;
  uint8_t type_ = Workstation;
};
