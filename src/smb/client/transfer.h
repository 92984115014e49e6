#pragma once
// Reading and writing of any length: pieces of a size that the server takes, side by side.

#include "smb/client/wire_operation.h"

// A piece that fails doesn't end the transfer before all that are in flight are answered, so that none of them still
// changes the file when the caller goes on; no further ones are begun.
class ZnSmbTransfer : public ZnSmbWireOperation {
 protected:
  // `length` bytes, in pieces of at most `piece`.
  ZnSmbTransfer(ZnSmbConversation& conversation, ZnSmbCaller caller, uint16_t tid, ZnSmbDone done, size_t length,
                size_t piece);

  // Sends the requests of the first pieces.
  void Begin();
  // A request for these bytes.
  virtual void AskFor(const Part& part) = 0;
  // What a reply brings; the reason for which it can't be taken.
  virtual Reason TakeReply(const ZnSMBCDecode& reply, const Part& part) = 0;
  // All is there, as far as end().
  virtual void Complete() {}

  // There is nothing to be had from here on. What pieces behind it bring, or fail with, doesn't count.
  void EndsAt(size_t position) { end_ = std::min(end_, position); }
  size_t end() const { return end_; }

 private:
  bool Accepted(const ZnSMBCDecode& reply, const Part& part) override;
  bool Refused(const Part& part) override { return Answered(part, Values::ErrSMB); }
  void Lost(Reason reason, const Part& part) override { Answered(part, reason); }
  bool Answered(const Part& part, Reason reason);
  bool AskOn();

  size_t piece_;
  size_t end_;
  size_t asked_ = 0;  // from the beginning
  size_t failedat_ = SIZE_MAX;
  ZnSmbOutcome failure_;  // of the piece there
};

// How much a request may carry. The margin is what its headers take, rounded up so that the usual buffers give pieces
// of whole pages.
namespace ZnSmbPieces {

inline constexpr size_t kLarge = 0xF000;  // all that 16 bits of length hold, in whole pages
inline constexpr unsigned kMargin = 260;
inline constexpr uint64_t kLargestOldFile = 0xFFFFFFFF;
inline constexpr uint64_t kLargestFile = 0x7FFFFFFFFFFFFFFF;

// Bytes of a request whose bytes have to fit into the server's buffer.
inline size_t FittingBuffer(const ZnSMBServerInfo& server) { return server.maxbuffersize() - kMargin; }
// Whether these bytes go in one of the old requests, as all do in old dialects. A server answers those at once; some
// hand the new ones to threads of theirs, which costs more than a few bytes do.
inline bool GoInOldRequest(const ZnSmbConversation& conversation, uint64_t offset, size_t length) {
  if (!conversation.IsNt()) return true;
  return length <= FittingBuffer(conversation.server) && offset <= kLargestOldFile - length;
}
// Bytes that a file may have, so that requests can name each of its places.
inline uint64_t LargestFile(const ZnSMBServerInfo& server) {
  return server.capabilities.large_files ? kLargestFile : kLargestOldFile;
}

}  // namespace ZnSmbPieces
