#pragma once
// What all operations of a client share: the connection, what the server has told, who we are to it, and which trees
// are connected. It makes whole requests of sections, and knows no operation by its kind.

#include <map>
#include <memory>
#include <vector>

#include "runtime/weak_ref.h"
#include "smb/client/client.h"
#include "smb/client/connection.h"

class ZnSmbWireOperation;

class ZnSmbConversation : public ZnReferable, private ZnSmbConnection::Owner {
 public:
  using Reason = ZnSMBClientValues::Reason;
  using Command = ZnSMBClientValues::Command;

  // Who brings the connection about hears of it until it stands.
  class Connector {
   public:
    virtual ~Connector() = default;
    virtual void Connected() = 0;
    virtual void ConnectionLost(Reason reason) = 0;
    virtual void Forgotten() = 0;  // by Forget
  };

  // What stands around the sections of a request.
  struct Envelope {
    Command command = ZnSMBClientValues::CmdNone;
    uint16_t tid = 0;
    ZnSmbCaller caller = 0;
  };

  ZnSmbConversation(ZnEventLoopBase* loop, ZnSmbClient::Owner* owner);  // neither owned
  ZnSmbConversation(const ZnSmbConversation&) = delete;
  ZnSmbConversation& operator=(const ZnSmbConversation&) = delete;
  ~ZnSmbConversation() override;

  ZnEventLoopBase* loop() const { return loop_; }
  ZnSmbConnection& connection() { return connection_; }
  const ZnSmbConnection& connection() const { return connection_; }
  const ZnSmbSettings& settings() const { return settings_; }
  void Settings(const ZnSmbSettings& settings);

  // ---- its life

  // Starts anew; false: it couldn't.
  bool Connect(Connector* connector, const ZnMachine& own, const ZnMachine& server);
  // The connector has done, and operations may begin.
  void Established();
  bool IsEstablished() const { return established_; }
  // Ends the connection and forgets all that belonged to it.
  void Forget();

  // ---- what is known of the server

  ZnSMBServerInfo server;
  uint16_t uid = 0;    // ours with it
  bool signs = false;  // the messages are signed, or shall be when the logon is over

  bool IsNt() const { return server.dialect == ZnSMBClientValues::DialectNT; }
  bool IsCore() const { return server.dialect == ZnSMBClientValues::DialectCORE; }
  // How many requests it takes at a time.
  void MostInFlight(unsigned count);
  unsigned MostInFlight() const { return mostinflight_; }
  void EnterTree(const ZnSMBCTreeObject& tree) { trees_.insert({tree.tid, tree.service}); }  // what is there stays
  bool HasTree(uint16_t tid) const { return trees_.contains(tid); }

  // Of the strings in requests, and in replies.
  ZnEncoding RequestEncoding() const { return server.unicode ? ZnCodeset::Utf16Lsb : settings_.encoding; }
  ZnEncoding ReplyEncoding(const ZnSMBCHeader& reply) const { return OfServer(server.unicode && reply.unicode); }
  // UTF-16 or the eight-bit encoding.
  ZnEncoding OfServer(bool unicode) const { return unicode ? ZnEncoding{ZnCodeset::Utf16Lsb} : settings_.encoding; }

  // ---- requests

  // Sends one of any section classes; `tail` is the end of the data section, and is shared. 0: it doesn't fit into a
  // message.
  template <class Words, class Data>
  ZnSmbExchangeId Send(const Envelope& envelope, const Words& words, const Data& data, const ZnByteBuffer& tail,
                       ZnSmbExchangeOwner* owner) {
    return SendMessage(envelope, ZnSMBClientEncode(HeaderOf(envelope), words, data, tail.Length()), tail, owner);
  }
  // The same; nobody waits for the reply.
  template <class Words, class Data>
  void Tell(const Envelope& envelope, const Words& words, const Data& data) {
    Send(envelope, words, data, ZnByteBuffer(), &nobody_);
  }

  // Keeps an operation whose handle has gone until it ends.
  void Adopt(std::unique_ptr<ZnSmbWireOperation> operation);

 private:
  class Nobody : public ZnSmbExchangeOwner {
    bool Replied(ZnSmbExchangeId, const ZnSMBCDecode&) override { return false; }
    void NotReplied(ZnSmbExchangeId, const ZnSmbNoReply&) override {}
  };

  void Connected() override;
  void ConnectionLost(Reason reason) override;
  ZnSMBCHeader HeaderOf(const Envelope& envelope) const;
  ZnSmbExchangeId SendMessage(const Envelope& envelope, ZnPacket message, const ZnByteBuffer& tail,
                              ZnSmbExchangeOwner* owner);

  ZnEventLoopBase* loop_;
  ZnSmbClient::Owner* owner_;
  const uint16_t pid_;
  ZnSmbSettings settings_;
  Connector* connector_ = nullptr;
  bool established_ = false;
  unsigned mostinflight_ = 1;
  std::map<uint16_t, ZnSMBClientValues::Service> trees_;  // by tid
  Nobody nobody_;
  ZnSmbConnection connection_;
  std::vector<std::unique_ptr<ZnSmbWireOperation>> adopted_;  // they give up what they have on the connection
};
