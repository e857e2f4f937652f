# How every target of ours is compiled: C++20, warnings as errors, ccache, sanitizers on request.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_INTERPROCEDURAL_OPTIMIZATION OFF)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O2")

find_program(TARNOVA_CCACHE ccache)
if(TARNOVA_CCACHE)
    # Relative paths in the hash, so that build folders side by side share their objects.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND};-E;env;CCACHE_BASEDIR=/;CCACHE_NOHASHDIR=1;${TARNOVA_CCACHE}")
endif()

add_library(tarnova_compiler INTERFACE)
target_compile_options(tarnova_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-qual
    -Werror -fno-strict-aliasing)
target_compile_definitions(tarnova_compiler INTERFACE RAPIDJSON_HAS_STDSTRING=1)

if(TARNOVA_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer -O1 -g1)
    add_link_options(-fsanitize=address,undefined)
endif()

if(TARNOVA_FUZZ)
    # Coverage in every layer; the targets themselves bring libFuzzer's main (fuzz/CMakeLists.txt).
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -O1 -g1)
    add_link_options(-fsanitize=address,undefined)
endif()
