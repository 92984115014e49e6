# bench/<name>_bench.cpp is the program bench_<name>, bench/relay.cpp the relay that some of them run beside, bench/shared/
# what they share. The target `bench` builds them all, `all` none.

add_custom_target(bench)
file(GLOB bench_sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/bench/*.cpp")
file(GLOB bench_shared CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/bench/shared/*.cpp")
if(bench_sources)
  find_package(GTest REQUIRED)
  add_library(bench_shared STATIC EXCLUDE_FROM_ALL ${bench_shared})
  target_include_directories(bench_shared PUBLIC "${CMAKE_SOURCE_DIR}/bench" "${CMAKE_SOURCE_DIR}/tests")
  target_compile_definitions(bench_shared PUBLIC "HALDEN_SOURCE_DIR=\"${CMAKE_SOURCE_DIR}\""
    "HALDEN_BIN_DIR=\"${HALDEN_BIN_DIR}\"" "HALDEN_BENCH_DIR=\"${CMAKE_BINARY_DIR}/bench\"")
  target_link_libraries(bench_shared PUBLIC core GTest::gtest)
endif()
foreach(source IN LISTS bench_sources)
  cmake_path(GET source STEM name)
  string(REGEX REPLACE "_bench$" "" name "${name}")
  add_executable(bench_${name} EXCLUDE_FROM_ALL "${source}")
  target_link_libraries(bench_${name} PRIVATE bench_shared)
  set_target_properties(bench_${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bench")
  add_dependencies(bench_${name} haldenmapd haldenctl)
  add_dependencies(bench bench_${name})
endforeach()
