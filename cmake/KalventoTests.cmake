# kalvento_add_test(NAME SOURCES... [LIBRARIES ...]): one test program a folder, each case known to ctest.
find_package(GTest REQUIRED)
include(GoogleTest)

# What is tested is optimised to the full; its tests run once and are compiled far more often. Through precompiled headers
# GCC no longer knows which code is the standard library's, and tells its false findings there.
set(KALVENTO_TEST_OPTIONS $<$<CONFIG:Release>:-O1>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds> $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overread>)

function(kalvento_add_test name)
    cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE kalvento_test_support ${arg_LIBRARIES} GTest::gmock GTest::gtest_main)
    target_compile_options(${name} PRIVATE ${KALVENTO_TEST_OPTIONS})
    target_precompile_headers(${name} REUSE_FROM kalvento_test_headers)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300)
endfunction()
