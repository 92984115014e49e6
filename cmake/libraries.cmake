# What the daemon links beyond the C++ standard library and POSIX.

# c-ares resolves names of hosts without blocking.
find_path(CARES_INCLUDE_DIR ares.h)
find_library(CARES_LIBRARY cares)
if(NOT CARES_INCLUDE_DIR OR NOT CARES_LIBRARY)
  message(FATAL_ERROR "c-ares is missing (libc-ares-dev): ./dev setup installs it")
endif()
target_include_directories(runtime SYSTEM PRIVATE "${CARES_INCLUDE_DIR}")
target_link_libraries(runtime PRIVATE "${CARES_LIBRARY}")

# nettle has the digests and ciphers of logons, signatures and stored passwords.
find_path(NETTLE_INCLUDE_DIR nettle/hmac.h)
find_library(NETTLE_LIBRARY nettle)
if(NOT NETTLE_INCLUDE_DIR OR NOT NETTLE_LIBRARY)
  message(FATAL_ERROR "nettle is missing (nettle-dev): ./dev setup installs it")
endif()
target_include_directories(crypto SYSTEM PRIVATE "${NETTLE_INCLUDE_DIR}")
target_link_libraries(crypto PRIVATE "${NETTLE_LIBRARY}")
