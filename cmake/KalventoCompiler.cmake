# How everything here is compiled: C++20, hidden symbols, the warnings that we keep at zero, sanitizers on demand.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Programs and plug-ins find our library from their own place, so that an installed tree can be moved.
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_program(KALVENTO_CCACHE ccache)
if(KALVENTO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # The cache takes sources with precompiled headers only where it is told that these may be trusted.
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${KALVENTO_CCACHE}")
endif()

add_library(kalvento_warnings INTERFACE)
target_compile_options(kalvento_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
# Optimising, GCC 12 sees overlapping and endless copies inside of std::string where none can be
# (https://gcc.gnu.org/bugzilla/show_bug.cgi?id=105651), and reads of an empty std::optional behind the very test of it
# (https://gcc.gnu.org/bugzilla/show_bug.cgi?id=80635). The sanitizers and clang-tidy look for both in earnest.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(kalvento_warnings INTERFACE -Wno-restrict -Wno-array-bounds
        -Wno-stringop-overflow -Wno-stringop-overread -Wno-maybe-uninitialized)
endif()
if(KALVENTO_WERROR)
    target_compile_options(kalvento_warnings INTERFACE -Werror)
endif()
# Folding must give the same bits on every machine: no fused multiply-add behind our back.
target_compile_options(kalvento_warnings INTERFACE -ffp-contract=off)

# What makes a slip in memory a crash instead of a way in. The linker's part costs nothing and is always there; the
# compiler's needs an optimised build, and the sanitizers look for the same in earnest.
include(CheckPIESupported)
check_pie_supported()
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
if(NOT KALVENTO_SANITIZE AND NOT KALVENTO_FUZZ)
    add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
    include(CheckCXXCompilerFlag)
    foreach(flag IN ITEMS stack-clash-protection cf-protection)
        string(MAKE_C_IDENTIFIER "KALVENTO_HAS_${flag}" has)
        check_cxx_compiler_flag("-f${flag}" ${has}) # not on every processor
        if(${has})
            add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-f${flag}>")
        endif()
    endforeach()
endif()

if(KALVENTO_SANITIZE)
    add_compile_options(-fsanitize=${KALVENTO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${KALVENTO_SANITIZE})
endif()
if(KALVENTO_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# kalvento_precompile(TARGETS...): static libraries of ours that share the compiled standard headers, those which nearly all
# sources include. Sources still name what they use; the preset tsan, which goes without, proves that they do.
option(KALVENTO_PRECOMPILE "Compile the standard headers once instead of for every source" ON)
set(KALVENTO_STANDARD_HEADERS "")
if(KALVENTO_PRECOMPILE)
    set(KALVENTO_STANDARD_HEADERS
        <algorithm> <array> <atomic> <charconv> <chrono> <cmath> <condition_variable> <cstddef> <cstdint> <exception>
        <filesystem> <functional> <iterator> <limits> <map> <memory> <mutex> <optional> <ostream> <set> <span> <stdexcept>
        <string> <string_view> <system_error> <thread> <utility> <vector>)
    # The build needs a source to compile them for.
    file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/StandardHeaders.cpp" CONTENT "")
    add_library(kalvento_standard_headers OBJECT "${PROJECT_BINARY_DIR}/StandardHeaders.cpp")
    target_link_libraries(kalvento_standard_headers PRIVATE kalvento_warnings)
    target_precompile_headers(kalvento_standard_headers PRIVATE ${KALVENTO_STANDARD_HEADERS})
endif()
function(kalvento_precompile)
    if(KALVENTO_PRECOMPILE)
        foreach(target IN LISTS ARGN)
            target_precompile_headers(${target} REUSE_FROM kalvento_standard_headers)
        endforeach()
    endif()
endfunction()
