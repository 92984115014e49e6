# bench/<name>_bench.cpp is the Google Benchmark program bench_<name>; the target `bench` builds them all, `all` none.

add_custom_target(bench)
file(GLOB bench_sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/bench/*_bench.cpp")
foreach(source IN LISTS bench_sources)
  find_package(benchmark REQUIRED)
  find_package(GTest REQUIRED)
  cmake_path(GET source STEM name)
  string(REGEX REPLACE "_bench$" "" name "${name}")
  add_executable(bench_${name} EXCLUDE_FROM_ALL "${source}")
  target_include_directories(bench_${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_compile_definitions(bench_${name} PRIVATE "HALDEN_SOURCE_DIR=\"${CMAKE_SOURCE_DIR}\""
    "HALDEN_BIN_DIR=\"${HALDEN_BIN_DIR}\"")
  target_link_libraries(bench_${name} PRIVATE core benchmark::benchmark GTest::gtest)
  set_target_properties(bench_${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bench")
  add_dependencies(bench_${name} haldenmapd haldenctl)
  add_dependencies(bench bench_${name})
endforeach()
