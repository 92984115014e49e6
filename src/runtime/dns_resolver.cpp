#include "runtime/dns_resolver.h"

#include <ares.h>

#include <algorithm>
#include <map>

#include "runtime/host_text.h"
#include "runtime/sys_encoding.h"
#include "runtime/timer.h"

namespace {

constexpr int kFirstTryMilliseconds = 2000, kTries = 3;
constexpr std::chrono::seconds kLongest{10};

class HostQuery : public ZnDNSQuery {
 public:
  HostQuery(ZnEventLoopBase* loop, const ZnUniString& name, Callback* callback);
  ~HostQuery() override;

 private:
  // One side of one of the library's sockets.
  class Side : public ZnEventCallback {
   public:
    Side(HostQuery* query, ares_socket_t read, ares_socket_t write) : query_(query), read_(read), write_(write) {}
    void Dispatch(ZnEvent::cbdispatch) override { query_->Process(read_, write_); }  // may delete this

   private:
    HostQuery* query_;
    ares_socket_t read_, write_;
  };
  struct Sides {
    Sides(HostQuery* query, ares_socket_t socket)
        : read(query, socket, ARES_SOCKET_BAD), write(query, ARES_SOCKET_BAD, socket) {}
    Side read, write;
  };

  bool OpenChannel();
  void Process(ares_socket_t read, ares_socket_t write);
  void TimerCB(ZnEventCallback*, ZnEvent::cbdispatch) { Process(ARES_SOCKET_BAD, ARES_SOCKET_BAD); }
  void ArmTimer();
  void Watch(ares_socket_t socket, bool read, bool write);
  void Completed(int status, ares_addrinfo* found);

  ZnEventLoopBase* loop_;
  ZnUniString name_;
  ZnSimpleCallback<ZnEvent::cbdispatch, HostQuery> timerCallback_{this, &HostQuery::TimerCB};
  ZnTimer timer_;
  ZnMoment deadline_ = ZnSteadyClock::now() + kLongest;
  std::map<ares_socket_t, Sides> sockets_;
  ares_channel channel_ = nullptr;
};

HostQuery::HostQuery(ZnEventLoopBase* loop, const ZnUniString& name, Callback* callback)
    : ZnDNSQuery(callback), loop_(loop), name_(name), timer_(loop, &timerCallback_) {
  const auto hostname = ZnHostText(name, ZnSysEncoding::dnsname, ZnSysEncoding::dnsnameopt);
  if (!hostname || !OpenChannel()) {
    TakeAnswer(name_, {}, {});
    return;
  }
  ares_addrinfo_hints hints = {};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = ARES_AI_NOSORT;
  ares_getaddrinfo(
      channel_, ZnCStringOf(*hostname), nullptr, &hints,
      [](void* self, int status, int, ares_addrinfo* found) {
        static_cast<HostQuery*>(self)->Completed(status, found);
      },
      this);
  if (!IsAnswered()) ArmTimer();
}

// Ends what is open; the library then closes its sockets, and says so.
HostQuery::~HostQuery() {
  if (channel_) ares_destroy(channel_);
}

bool HostQuery::OpenChannel() {
  static const bool ready = ares_library_init(ARES_LIB_INIT_ALL) == ARES_SUCCESS;
  ares_options options = {};
  options.timeout = kFirstTryMilliseconds;
  options.tries = kTries;
  options.sock_state_cb_data = this;
  options.sock_state_cb = [](void* self, ares_socket_t socket, int read, int write) {
    static_cast<HostQuery*>(self)->Watch(socket, read != 0, write != 0);
  };
  const int given = ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES | ARES_OPT_SOCK_STATE_CB;
  return ready && ares_init_options(&channel_, &options, given) == ARES_SUCCESS;
}

// The library mustn't lose its channel below its own feet: the owner is told when it has returned.
void HostQuery::Process(ares_socket_t read, ares_socket_t write) {
  ares_process_fd(channel_, read, write);
  if (!IsAnswered() && ZnSteadyClock::now() >= deadline_) TakeAnswer(name_, {}, {});
  if (!IsAnswered()) return ArmTimer();
  timer_.Cancel();
  TellOwner();
}

void HostQuery::ArmTimer() {
  timeval most = {kLongest.count(), 0}, wait = {};
  ares_timeout(channel_, &most, &wait);
  const ZnSteadyClock::duration span = std::chrono::seconds(wait.tv_sec) + std::chrono::microseconds(wait.tv_usec);
  timer_.Set(std::min(span, deadline_ - ZnSteadyClock::now()) + std::chrono::milliseconds(1));
}

void HostQuery::Watch(ares_socket_t socket, bool read, bool write) {
  const auto fd = static_cast<unsigned>(socket);
  loop_->RemoveFileEvent(fd, true, true, nullptr);
  if (!read && !write) {
    sockets_.erase(socket);
    return;
  }
  Sides& sides = sockets_.try_emplace(socket, this, socket).first->second;
  if (read) loop_->AddFileEvent(fd, true, false, &sides.read);
  if (write) loop_->AddFileEvent(fd, false, true, &sides.write);
}

// A name that leads to another has the shorter life of the two.
void HostQuery::Completed(int status, ares_addrinfo* found) {
  if (status == ARES_EDESTRUCTION || IsAnswered()) return;
  ZnDList<ZnInetAddr> addresses;
  auto ttl = static_cast<int>(ZnDNSCache::kLongest.count());
  for (const ares_addrinfo_node* one = found ? found->nodes : nullptr; one; one = one->ai_next) {
    if (one->ai_family != AF_INET) continue;
    addresses.Append(ZnInetAddr(reinterpret_cast<const sockaddr_in*>(one->ai_addr)->sin_addr));
    ttl = std::min(ttl, one->ai_ttl);
  }
  for (const ares_addrinfo_cname* one = found ? found->cnames : nullptr; one; one = one->next) {
    ttl = std::min(ttl, one->ttl);
  }
  if (found) ares_freeaddrinfo(found);
  TakeAnswer(name_, std::move(addresses), std::chrono::seconds(std::max(ttl, 0)));
}

}  // namespace

std::unique_ptr<ZnDNSQuery> ZnHostResolver::Ask(ZnEventLoopBase* loop, const ZnUniString& name,
                                                ZnDNSQuery::Callback* callback) {
  return std::make_unique<HostQuery>(loop, name, callback);
}
