#pragma once
// Contract. Building text piece by piece: `stream << "Failed to open " << path << ": " << error`.

#include <concepts>
#include <cstdio>
#include <memory>

#include "runtime/inet_addr.h"
#include "runtime/time_val.h"
#include "runtime/uni_string.h"
#include "runtime/unix_error.h"

class ZnOStream {
 public:
  ZnOStream() = default;
  ZnOStream(const ZnOStream&) = delete;
  ZnOStream& operator=(const ZnOStream&) = delete;
  virtual ~ZnOStream() = default;

  ZnOStream& operator<<(const ZnUniString& text) {
    Put(text);
    return *this;
  }
  ZnOStream& operator<<(const char* utf8) { return *this << ZnUniString(utf8); }  // null is empty
  // Decimal.
  template <std::integral T>
  requires(!std::same_as<T, bool> && !std::same_as<T, char>) ZnOStream& operator<<(T number) {
    if constexpr (std::signed_integral<T>) return Signed(number);
    return Unsigned(static_cast<uint64_t>(number));
  }
  // The dotted form without port.
  ZnOStream& operator<<(const ZnInetAddr& address) { return *this << address.AsString(false); }
  // Local time, "2026/11/23 02:18:31.042".
  ZnOStream& operator<<(const ZnTimeVal& time);
  // Its Reason.
  ZnOStream& operator<<(const ZnUnixError& error) { return *this << error.Reason(); }
  ZnOStream& operator<<(const ZnError& error) { return *this << error.Text(); }

 protected:
  virtual void Put(const ZnUniString& text) = 0;

 private:
  ZnOStream& Signed(int64_t number);
  ZnOStream& Unsigned(uint64_t number);
};

// Collects the text.
class ZnOSStream : public ZnOStream {
 public:
  const ZnUniString& text() const { return text_; }
  bool IsEmpty() const { return text_.IsEmpty(); }
  // Begins anew.
  void Truncate() { text_ = ZnUniString(); }

 protected:
  void Put(const ZnUniString& text) override { text_.Append(text); }

 private:
  ZnUniString text_;
};

struct ZnFileCloser {
  void operator()(FILE* file) const { fclose(file); }
};
// A C stream with its owner.
using ZnCFile = std::unique_ptr<FILE, ZnFileCloser>;

// Writes the text to a C stream, which isn't owned, in an encoding. Write errors show in ferror.
class ZnOFStream : public ZnOStream {
 public:
  ZnOFStream(FILE* file, ZnEncoding encoding, unsigned options = 0)
      : file_(file), encoding_(encoding), options_(options) {}
  void Flush() { fflush(file_); }

 protected:
  void Put(const ZnUniString& text) override;

 private:
  FILE* file_;
  ZnEncoding encoding_;
  unsigned options_;
};
