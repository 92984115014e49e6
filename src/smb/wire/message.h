#pragma once
// Whole messages: header, word count, words, byte count, data. One command a message; nothing is chained.
// (MS-CIFS 2.2.3)

#include <span>

#include "smb/wire/header.h"

// Bytes of a message that are neither words nor data: header, word count and byte count.
inline constexpr size_t kZnSmbFramingSize = ZnSMBCHeader::kSize + 3;

// A received message, taken apart. Nothing is copied before a section is read.
class ZnSMBCDecode {
 public:
  ZnSMBCHeader header;
  uint8_t wordcount = 0;
  uint16_t bytecount = 0;
  bool valid = true;

  ZnSMBCDecode() = default;
  explicit ZnSMBCDecode(const ZnByteBuffer& message) { Read(message); }
  explicit ZnSMBCDecode(std::span<const uint8_t> message) { Read(message); }

  // False when the message is cut short or isn't SMB; header.valid tells whether its header at least was good. Bytes
  // behind the data are ignored. The word count isn't compared with the command: each section finds that out for
  // itself. A buffer is shared; the bytes of a span are to stay as long as sections are read.
  bool Read(const ZnByteBuffer& message);
  bool Read(std::span<const uint8_t> message);
  // The whole message, with what stands behind its data.
  std::span<const uint8_t> Bytes() const { return bytes_; }
  // A section's bytes, as long as this object isn't read into again.
  ZnSmbReader Words() const { return Section(ZnSMBCHeader::kSize + 1, WordsSize()); }
  ZnSmbReader Data() const { return Section(DataStart(), bytecount); }
  // Reads a section into its record: the outcome is the record's `valid`.
  template <class R>
  bool ReadWords(R& words) const {
    ZnSmbReader in = Words();
    return words.Read(in);
  }
  template <class R>
  bool ReadData(R& data) const {
    ZnSmbReader in = Data();
    return data.Read(in);
  }
  // Where the data section begins in the message: what the offsets of a transaction are counted against.
  size_t DataStart() const { return kZnSmbFramingSize + WordsSize(); }

  ZnPacket Pack() const;
  size_t HowBig() const { return DataStart() + bytecount; }
  bool operator==(const ZnSMBCDecode& other) const;

 private:
  size_t WordsSize() const { return size_t{2} * wordcount; }
  ZnSmbReader Section(size_t start, size_t size) const;

  std::span<const uint8_t> bytes_;
  ZnByteBuffer message_;  // holds them, if a buffer was read
};

// A message to send: assembled in one buffer, each section written straight behind the other.
class ZnSMBClientEncode : public ZnPacket {
 public:
  // `words` and `data` are records of any section classes. An odd last byte of the words isn't counted, and the data's
  // size goes into 16 bits: the caller keeps it below 65536 bytes. `tail` bytes are sent behind `data` as the rest of
  // the data section: they are counted, and aren't in this buffer.
  template <class Words, class Data>
  ZnSMBClientEncode(const ZnSMBCHeader& header, const Words& words, const Data& data, size_t tail = 0) {
    Reserve(kUsualSize);
    AppendSection(header);
    Append(uint8_t{0});
    size_t wordsSize = AppendSection(words);
    Append("\0", 2);
    size_t dataSize = AppendSection(data);
    SetCounts(wordsSize, dataSize + tail);
  }

 private:
  static constexpr size_t kUsualSize = 256;

  using ZnPacket::Append;
  template <class R>
  size_t AppendSection(const R& section) {
    ZnSmbWriter out(*this);
    section.Write(out);
    return out.Offset();
  }
  void SetCounts(size_t wordsSize, size_t dataSize);
};
