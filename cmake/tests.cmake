# tests/<folder>/*.cpp is the GoogleTest binary test_<folder>, linked to the library of that name.
# A folder without a library of its name (tools, say) is linked to everything.

set(HALDEN_TEST_TIMEOUT 300)
# What the sanitizers can see beyond their defaults: static objects that lean on each other's order, pointers to locals
# of functions that have returned. Without the sanitizers nobody reads these.
set(sanitizer_options "ASAN_OPTIONS=strict_init_order=1:check_initialization_order=1:detect_stack_use_after_return=1"
                      "UBSAN_OPTIONS=print_stacktrace=1")
file(GLOB test_sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/*/*.cpp")
set(support_sources ${test_sources})
list(FILTER support_sources INCLUDE REGEX "/tests/support/")
list(FILTER test_sources EXCLUDE REGEX "/tests/(support|integration)/")

add_library(halden_test_base INTERFACE)
target_include_directories(halden_test_base INTERFACE "${CMAKE_SOURCE_DIR}/tests")
target_compile_definitions(halden_test_base INTERFACE "HALDEN_SOURCE_DIR=\"${CMAKE_SOURCE_DIR}\"")
# What tests are about is compiled in the libraries; the tests themselves are to build fast, and GCC 12 sees overflows in
# perfectly good vectors of theirs at -O2.
target_compile_options(halden_test_base INTERFACE -O1)
target_link_libraries(halden_test_base INTERFACE halden_base)

if(test_sources)
  find_package(GTest REQUIRED)
  target_link_libraries(halden_test_base INTERFACE GTest::gmock GTest::gtest)

  # The support library names no layer: each test binary links those that it needs behind it, so that a test of a
  # low folder builds without the high ones.
  if(support_sources)
    add_library(test_support STATIC ${support_sources})
    target_link_libraries(test_support PUBLIC halden_test_base)
  else()
    add_library(test_support INTERFACE)
    target_link_libraries(test_support INTERFACE halden_test_base)
  endif()
endif()

foreach(source IN LISTS test_sources)
  cmake_path(GET source PARENT_PATH folder)
  cmake_path(GET folder FILENAME folder)
  set(binary test_${folder})
  if(NOT TARGET ${binary})
    set(library core)
    if(TARGET ${folder})
      set(library ${folder})
    endif()
    add_executable(${binary})
    target_link_libraries(${binary} PRIVATE GTest::gtest_main test_support ${library})
    set_target_properties(${binary} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    if(library STREQUAL core AND TARGET haldenmapd)
      add_dependencies(${binary} haldenmapd)  # these tests run the daemon itself
    endif()
    add_test(NAME ${folder} COMMAND ${binary})
    set_tests_properties(${folder} PROPERTIES LABELS "unit;${folder}" TIMEOUT ${HALDEN_TEST_TIMEOUT}
                                              ENVIRONMENT "${sanitizer_options}")
  endif()
  target_sources(${binary} PRIVATE "${source}")
endforeach()

# tests/integration/test_*.py: the built daemon between real peers. Debian's python3 by its full path, because
# another python3 in PATH wouldn't see Debian's pytest.
option(HALDEN_REQUIRE_PYTEST "fail, rather than leave them out, when the integration tests can't run" OFF)
file(GLOB integration_tests CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/integration/test_*.py")
if(integration_tests)
  execute_process(COMMAND /usr/bin/python3 -c "import pytest" RESULT_VARIABLE pytest_missing OUTPUT_QUIET ERROR_QUIET)
  if(NOT pytest_missing)
    set(integration_environment
        "HALDEN_BIN_DIR=${HALDEN_BIN_DIR};HALDEN_TESTS_DIR=${CMAKE_BINARY_DIR}/tests;PYTHONDONTWRITEBYTECODE=1")
    foreach(file IN LISTS integration_tests)
      cmake_path(GET file STEM name)
      string(REGEX REPLACE "^test_" "integration_" name "${name}")
      add_test(NAME ${name} COMMAND /usr/bin/python3 -m pytest -p no:cacheprovider -q -rs "${file}")
      set_tests_properties(
        ${name} PROPERTIES LABELS integration TIMEOUT ${HALDEN_TEST_TIMEOUT} RUN_SERIAL ON
                           ENVIRONMENT "${sanitizer_options};${integration_environment}")
    endforeach()
  elseif(HALDEN_REQUIRE_PYTEST OR DEFINED ENV{CI})
    message(FATAL_ERROR "python3-pytest is missing, the integration tests can't run: ./dev setup installs it")
  else()
    message(WARNING "python3-pytest is missing, the integration tests are left out: ./dev setup installs it")
  endif()
endif()
