#pragma once
// Names of hosts, without waiting: a query is begun, and its answer comes through the event loop. Answers are kept for
// a while, and never for ever.

#include <cstdint>
#include <memory>
#include <optional>

#include "runtime/clock.h"
#include "runtime/dictionary.h"
#include "runtime/event_loop.h"
#include "runtime/inet_addr.h"
#include "runtime/list.h"
#include "runtime/uni_string.h"

struct ZnDNSAnswer {
  ZnDList<ZnInetAddr> addresses;  // of port 0; none when the name has none, or nobody could be asked
  ZnMoment until;                 // how long it may be relied on
};

// A question. Destroying it withdraws it.
class ZnDNSQuery {
 public:
  using Callback = ZnCallback<const ZnDNSAnswer&>;

  // `callback` isn't owned.
  explicit ZnDNSQuery(Callback* callback) : callback_(callback) {}
  // A question whose answer is there.
  explicit ZnDNSQuery(ZnDNSAnswer answer) : answer_(std::move(answer)) {}
  ZnDNSQuery(const ZnDNSQuery&) = delete;
  ZnDNSQuery& operator=(const ZnDNSQuery&) = delete;
  virtual ~ZnDNSQuery() = default;

  // Whether the answer came at once: then the callback isn't called.
  bool IsAnswered() const { return answer_.has_value(); }
  const ZnDNSAnswer& Answer() const { return *answer_; }

 protected:
  // For the resolver: takes the answer, keeping it for later questions after `name`, for which it holds for `ttl`.
  void TakeAnswer(const ZnUniString& name, ZnDList<ZnInetAddr> addresses, std::chrono::seconds ttl);
  // Hands the answer to the owner, who may delete this query. For answers that didn't come at once.
  void TellOwner() { callback_->Dispatch(*answer_); }

 private:
  Callback* callback_ = nullptr;
  std::optional<ZnDNSAnswer> answer_;
};

// Who is asked.
class ZnDNSResolver {
 public:
  virtual ~ZnDNSResolver() = default;
  // Begins a query for the IPv4 addresses of a name, or of an address in dotted form.
  virtual std::unique_ptr<ZnDNSQuery> Ask(ZnEventLoopBase* loop, const ZnUniString& name,
                                          ZnDNSQuery::Callback* callback) = 0;
};

// Answers by name, without regard to case.
class ZnDNSCache {
 public:
  // How many are kept: beyond that the one that would go first makes room.
  static constexpr size_t kMostEntries = 100;
  // A record may say less.
  static constexpr std::chrono::seconds kLongest{300}, kFailureKept{5};

  // Null when there is none, or none that still holds.
  const ZnDNSAnswer* Find(const ZnUniString& name);
  void Keep(const ZnUniString& name, const ZnDNSAnswer& answer);
  void Forget(const ZnUniString& name);
  size_t Count() const { return entries_.Count(); }

 private:
  void MakeRoom();

  ZnDictionary<ZnUniString, ZnDNSAnswer> entries_;
};

class ZnDNS {
 public:
  // The answer is there when this returns, or will come by `callback`, once, from the loop. Neither is owned.
  static std::unique_ptr<ZnDNSQuery> Ask(ZnEventLoopBase* loop, const ZnUniString& name,
                                         ZnDNSQuery::Callback* callback);
  // The next Ask doesn't rely on what is kept: an address has turned out to lead nowhere.
  static void Forget(const ZnUniString& name);
  // For the start, before there is a loop: appends the IPv4 addresses of a name, and waits for them. Leaves `list` as
  // it was when there are none.
  static void AwaitAddressList(const ZnUniString& name, ZnDList<ZnInetAddr>& list);
  // Tests put a resolver of their own in place of the host's, until null is set. What is kept is forgotten.
  static void SetResolver(std::unique_ptr<ZnDNSResolver> resolver);
};
