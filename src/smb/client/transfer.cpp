#include "smb/client/transfer.h"

ZnSmbTransfer::ZnSmbTransfer(ZnSmbConversation& conversation, ZnSmbCaller caller, uint16_t tid, ZnSmbDone done,
                             size_t length, size_t piece)
    : ZnSmbWireOperation(conversation, caller, tid, std::move(done)), piece_(piece), end_(length) {}

void ZnSmbTransfer::Begin() {
  if (end_ == 0 && MayAsk()) EndSoon(Values::ErrNone);
  AskOn();
}

bool ZnSmbTransfer::AskOn() {
  while (MayAsk() && failedat_ == SIZE_MAX && asked_ < end_ && UnderWay() < conversation()->MostInFlight()) {
    const Part part{asked_, std::min(piece_, end_ - asked_)};
    asked_ += part.length;
    AskFor(part);
  }
  return false;
}

bool ZnSmbTransfer::Accepted(const ZnSMBCDecode& reply, const Part& part) {
  return Answered(part, part.position < end_ ? TakeReply(reply, part) : Values::ErrNone);
}

bool ZnSmbTransfer::Answered(const Part& part, Reason reason) {
  if (reason != Values::ErrNone && part.position < failedat_) {
    failedat_ = part.position;
    failure_ = outcome_;
    failure_.reason = reason;
  }
  AskOn();
  if (UnderWay() > 0) return false;
  if (failedat_ < end_) {
    outcome_ = failure_;
    return End(failure_.reason);
  }
  Complete();
  return End();
}
