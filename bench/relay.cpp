// The relay by itself: bench_relay LISTENPORT TARGETPORT MICROSECONDS. See shared/relay.h.

#include "shared/relay.h"

#include <cstdio>
#include <string>

int main(int count, char** arguments) {
  if (count != 4) {
    fprintf(stderr,
            "usage: bench_relay LISTENPORT TARGETPORT MICROSECONDS\n"
            "Relays TCP on loopback; every byte arrives half of MICROSECONDS after it came, in both directions.\n");
    return 2;
  }
  RelayOptions options;
  options.listenport = static_cast<uint16_t>(std::stoul(arguments[1]));
  options.targetport = static_cast<uint16_t>(std::stoul(arguments[2]));
  options.roundtrip = std::chrono::microseconds(std::stoul(arguments[3]));
  RunRelay(options);
}
