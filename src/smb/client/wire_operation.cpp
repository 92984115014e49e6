#include "smb/client/wire_operation.h"

#include <algorithm>

ZnSmbWireOperation::ZnSmbWireOperation(ZnSmbConversation& conversation, ZnSmbDone done)
    : conversation_(&conversation), loop_(conversation.loop()), done_(std::move(done)) {}

ZnSmbWireOperation::ZnSmbWireOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, uint16_t tid,
                                       ZnSmbDone done)
    : ZnSmbWireOperation(conversation, std::move(done)) {
  caller_ = caller;
  tid_ = tid;
  lost_ = !conversation.IsEstablished();
  if (lost_) {
    EndSoon(Values::ErrNotConnected);
  } else if (tid != 0 && !conversation.HasTree(tid)) {
    EndSoon(Values::ErrBadTID);
  }
}

ZnSmbWireOperation::~ZnSmbWireOperation() {
  if (gone_) *gone_ = true;
  loop_->CancelTurnEnd(this);
  GiveUp();
}

// That which is being answered too: it ends only when its reply was taken, or with the connection.
void ZnSmbWireOperation::GiveUp() {
  if (answering_ != 0) underway_.push_back({std::exchange(answering_, 0), kNoPart});
  for (const Exchange& exchange : underway_) {
    if (conversation()) conversation()->connection().GiveUp(exchange.id);
  }
  underway_.clear();
}

void ZnSmbWireOperation::Abandon(ZnSmbDone done) {
  abandoned_ = true;
  done_ = std::move(done);
}

ZnSmbWireOperation::Part ZnSmbWireOperation::Take(ZnSmbExchangeId id) {
  const auto found = std::find_if(underway_.begin(), underway_.end(), [id](auto& each) { return each.id == id; });
  const Part part = found->part;
  underway_.erase(found);
  return part;
}

bool ZnSmbWireOperation::Replied(ZnSmbExchangeId id, const ZnSMBCDecode& reply) {
  served_ = true;
  const Part part = Take(id);
  outcome_.errorclass = reply.header.error_class;
  outcome_.errorcode = reply.header.error_code;
  answering_ = id;
  bool gone = false;
  gone_ = &gone;
  const bool more = IsRefusal(reply.header) ? Refused(part) : Accepted(reply, part);
  if (gone) return false;
  gone_ = nullptr;
  answering_ = 0;
  if (more) underway_.push_back({id, part});
  return more;
}

void ZnSmbWireOperation::NotReplied(ZnSmbExchangeId id, const ZnSmbNoReply& why) {
  lost_ = true;
  served_ = served_ || !why.unserved;
  Lost(why.reason, Take(id));
}

bool ZnSmbWireOperation::End(Reason reason) {
  if (IsOver()) return false;
  ending_ = true;
  Ending(reason);
  GiveUp();
  outcome_.reason = reason;
  outcome_.unserved = lost_ && !served_;
  if (reason != Values::ErrSMB) outcome_.errorclass = 0, outcome_.errorcode = 0;
  const ZnSmbDone done = std::exchange(done_, nullptr);
  const ZnSmbOutcome outcome = outcome_;
  if (done) done(outcome);
  return false;
}

bool ZnSmbWireOperation::EndSoon(Reason reason) {
  if (ending_) return false;
  ending_ = true;
  outcome_.reason = reason;
  loop_->AtTurnEnd(this);
  return false;
}

void ZnSmbWireOperation::Dispatch(ZnEvent::cbdispatch reason) {
  if (reason == ZnEvent::Fired && conversation()) End(outcome_.reason);
}

ZnSmbLastingCall::~ZnSmbLastingCall() {
  if (operation_->IsOver()) return;
  if (ZnSmbConversation* conversation = operation_->conversation()) conversation->Adopt(std::move(operation_));
}
