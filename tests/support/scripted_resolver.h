#pragma once
// A resolver that knows what a test tells it, and answers when the test says so.

#include <map>
#include <vector>

#include "runtime/dns.h"

class ScriptedResolver : public ZnDNSResolver {
 public:
  // In place of the host's resolver, until the test ends.
  static ScriptedResolver* Install() {
    auto* resolver = new ScriptedResolver;
    ZnDNS::SetResolver(std::unique_ptr<ZnDNSResolver>(resolver));
    return resolver;
  }

  std::unique_ptr<ZnDNSQuery> Ask(ZnEventLoopBase*, const ZnUniString& name, ZnDNSQuery::Callback* callback) override {
    asked.push_back(name.AsUtf8());
    auto query = std::make_unique<Query>(this, name, callback);
    if (!slow) query->Answer();
    return query;
  }
  // Answers what has been asked while this was slow.
  void AnswerAll() {
    while (!waiting_.empty()) waiting_.front()->AnswerLate();
  }

  bool slow = false;
  std::chrono::seconds ttl{1000};
  std::map<std::string, ZnInetAddr> hosts;
  std::vector<std::string> asked;

 private:
  class Query : public ZnDNSQuery {
   public:
    Query(ScriptedResolver* resolver, const ZnUniString& name, Callback* callback)
        : ZnDNSQuery(callback), resolver_(resolver), name_(name) {
      resolver_->waiting_.push_back(this);
    }
    ~Query() override { std::erase(resolver_->waiting_, this); }
    void Answer() {
      std::erase(resolver_->waiting_, this);
      const auto found = resolver_->hosts.find(name_.AsUtf8());
      ZnDList<ZnInetAddr> addresses;
      if (found != resolver_->hosts.end()) addresses.Append(found->second);
      TakeAnswer(name_, addresses, resolver_->ttl);
    }
    void AnswerLate() {
      Answer();
      TellOwner();
    }

   private:
    ScriptedResolver* resolver_;
    ZnUniString name_;
  };

  std::vector<Query*> waiting_;
};
