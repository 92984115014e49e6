#pragma once
// What every operation is made of: requests to the server, their replies, and one end. Each kind of operation is a
// class in the file of its idea; it is the only one that knows both its requests and their replies.

#include <vector>

#include "runtime/weak_ref.h"
#include "smb/client/conversation.h"

class ZnSmbWireOperation : public ZnSmbOperation,
                           public ZnReferable,
                           private ZnSmbExchangeOwner,
                           private ZnEventCallback {
 public:
  ~ZnSmbWireOperation() override;

  bool IsOver() const { return !done_; }
  ZnSmbConversation* conversation() const { return conversation_.Get(); }
  // Nobody waits any longer, but what was begun on the server has to be brought to an end: `done` tells of it. The
  // caller's objects aren't used any more.
  void Abandon(ZnSmbDone done);

 protected:
  using Values = ZnSMBClientValues;
  using Reason = Values::Reason;

  // Which bytes of the operation's data a request is about, where it has several.
  struct Part {
    size_t position;
    size_t length;
  };
  static constexpr Part kNoPart = {0, 0};

  // On a tree, 0 being none. Where that may not begin it ends soon, and sends nothing.
  ZnSmbWireOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, uint16_t tid, ZnSmbDone done);
  // On a connection that doesn't stand yet.
  ZnSmbWireOperation(ZnSmbConversation& conversation, ZnSmbDone done);

  // A reply without error. True: more messages of this reply are to come. Else it has ended the operation or asked on.
  virtual bool Accepted(const ZnSMBCDecode& reply, const Part& part) = 0;
  virtual bool IsRefusal(const ZnSMBCHeader& reply) const { return reply.error_class != 0; }
  // A reply with an error, which stands in the outcome already.
  virtual bool Refused(const Part&) { return End(Values::ErrSMB); }
  // No reply.
  virtual void Lost(Reason reason, const Part&) { End(reason); }
  // The operation is about to tell its end.
  virtual void Ending(Reason) {}

  // Not once it is over, or is known to end soon.
  bool MayAsk() const { return conversation() && !ending_ && !IsOver(); }
  // Asks the server, if it may. False, for a step to answer.
  template <class Words, class Data>
  bool Ask(Values::Command command, const Words& words, const Data& data, const ZnByteBuffer& tail = ZnByteBuffer(),
           const Part& part = kNoPart) {
    if (!MayAsk()) return false;
    outcome_.lastcommand = command;
    const ZnSmbExchangeId id = conversation()->Send({command, tid_, caller_}, words, data, tail, this);
    if (id == 0) return EndSoon(Values::ErrInternal);
    underway_.push_back({id, part});
    return false;
  }
  // The same without waiting for an answer.
  template <class Words, class Data>
  void Tell(Values::Command command, const Words& words, const Data& data) {
    conversation()->Tell({command, tid_, caller_}, words, data);
  }

  // Tells the end. This object may have gone when they return; they give false, for a step to answer.
  bool End(Reason reason = Values::ErrNone);
  // Tells it from the loop, unless that is settled already.
  bool EndSoon(Reason reason);

  bool IsAbandoned() const { return abandoned_; }
  size_t UnderWay() const { return underway_.size(); }
  ZnSmbOutcome outcome_;

 private:
  struct Exchange {
    ZnSmbExchangeId id;
    Part part;
  };

  bool Replied(ZnSmbExchangeId id, const ZnSMBCDecode& reply) override;
  void NotReplied(ZnSmbExchangeId id, const ZnSmbNoReply& why) override;
  void Dispatch(ZnEvent::cbdispatch reason) override;
  Part Take(ZnSmbExchangeId id);
  void GiveUp();

  ZnWeakRef<ZnSmbConversation> conversation_;
  ZnEventLoopBase* loop_;
  ZnSmbCaller caller_ = 0;
  uint16_t tid_ = 0;
  ZnSmbDone done_;
  std::vector<Exchange> underway_;
  ZnSmbExchangeId answering_ = 0;
  bool* gone_ = nullptr;  // whether this object went while a reply was being taken
  bool served_ = false;   // the server may have acted on something
  bool lost_ = false;     // something got no answer
  bool ending_ = false;   // the end will be told soon
  bool abandoned_ = false;
};

// An operation of which the server has to hear the end even when nobody waits any longer: what it has opened would stay
// open as long as the connection.
class ZnSmbLastingCall : public ZnSmbOperation {
 public:
  explicit ZnSmbLastingCall(std::unique_ptr<ZnSmbWireOperation> operation) : operation_(std::move(operation)) {}
  ~ZnSmbLastingCall() override;

 private:
  std::unique_ptr<ZnSmbWireOperation> operation_;
};

// One request, and a reply in which there is nothing of interest, or nothing but what `check` looks at.
class ZnSmbPlainOperation : public ZnSmbWireOperation {
 public:
  using Check = Reason (*)(const ZnSMBCDecode& reply);

  template <class Words, class Data>
  ZnSmbPlainOperation(ZnSmbConversation& conversation, ZnSmbCaller caller, uint16_t tid, ZnSmbDone done,
                      Values::Command command, const Words& words, const Data& data, Check check = nullptr)
      : ZnSmbWireOperation(conversation, caller, tid, std::move(done)), check_(check) {
    Ask(command, words, data);
  }

 private:
  bool Accepted(const ZnSMBCDecode& reply, const Part&) override {
    return End(check_ ? check_(reply) : Values::ErrNone);
  }

  Check check_;
};
