#pragma once
// A wire with a length: a TCP relay on loopback that hands on every byte half a round trip after it came, in both
// directions, and as many of them as come.

#include <chrono>
#include <cstdint>

struct RelayOptions {
  uint16_t listenport = 0;
  uint16_t targetport = 0;
  std::chrono::microseconds roundtrip{0};
};

// Listens, then relays every connection that comes for ever. Dies if it can't listen.
[[noreturn]] void RunRelay(const RelayOptions& options);
