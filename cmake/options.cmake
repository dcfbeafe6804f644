# SPDX-License-Identifier: MIT
# Two interface targets: what every compilation of the project shares, and what the library adds.
# (-Wuseless-cast is not among them: a cast that -Wconversion asks for on a 32-bit machine is useless
# on a 64-bit one, and the other way round.)

add_library(raxel_warnings INTERFACE)
target_compile_options(raxel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
  -Wcast-qual -Wformat=2 -Wundef -Wvla -Wdouble-promotion $<$<BOOL:${RAXEL_WERROR}>:-Werror>
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:GNU>>:-Wcast-align=strict -Wduplicated-cond -Wlogical-op>)

# Where the system's own numbers end at 2 GiB and in 2038 there are wider ones, for all that is built here.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

# Doubles are plain IEEE, each step rounded as written, on every machine.
add_library(raxel_numbers INTERFACE)
target_compile_options(raxel_numbers INTERFACE -ffp-contract=off)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^i[3-6]86$")
  target_compile_options(raxel_numbers INTERFACE -msse2 -mfpmath=sse)
endif()
if(RAXEL_SANITIZE)
  # Of the tests' own code only the addresses are watched: the other checks take a third of its compilation.
  target_compile_options(raxel_numbers INTERFACE
    -fsanitize=address$<$<NOT:$<BOOL:$<TARGET_PROPERTY:RAXEL_ONLY_TESTS>>>:,undefined,float-cast-overflow>
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(raxel_numbers INTERFACE -fsanitize=address,undefined)
endif()
if(RAXEL_THREAD_SANITIZER)
  target_compile_options(raxel_numbers INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(raxel_numbers INTERFACE -fsanitize=thread)
endif()
if(RAXEL_INTEGERS)
  # Numbers of the tests' own may do as they like. (Which object is of which type is another check's: its records
  # are one for each library, and an exception comes from another one.)
  target_compile_options(raxel_numbers INTERFACE $<$<NOT:$<BOOL:$<TARGET_PROPERTY:RAXEL_ONLY_TESTS>>>:
    -fsanitize=integer,undefined,float-divide-by-zero -fno-sanitize=vptr>)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-runtime-dir OUTPUT_VARIABLE runtime OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  target_link_options(raxel_numbers INTERFACE -fsanitize=undefined -shared-libsan LINKER:-rpath,${runtime})
endif()
# What starts with every picture carries its own part of the C++ library: to load the whole one, with the two
# thousand names that it looks up, takes longer than a small export.
add_library(raxel_own_runtime INTERFACE)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT RAXEL_SANITIZE AND NOT RAXEL_THREAD_SANITIZER AND NOT RAXEL_COVERAGE)
  target_link_options(raxel_own_runtime INTERFACE -static-libstdc++ -static-libgcc -Wl,--gc-sections)
endif()

if(RAXEL_COVERAGE)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/counts)
  add_library(raxel_counts STATIC ${PROJECT_SOURCE_DIR}/cmake/coverage/counts.c)
  target_compile_definitions(raxel_counts PRIVATE "RAXEL_COUNTS=\"${PROJECT_BINARY_DIR}/counts\"")
  set_target_properties(raxel_counts PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_compile_options(raxel_numbers INTERFACE --coverage -fprofile-update=atomic -fdata-sections)
  target_link_options(raxel_numbers INTERFACE --coverage
    -Wl,--wrap=__gcov_exit,--wrap=__gcov_dump,--wrap=__gcov_reset,--build-id
    -Wl,-T,${PROJECT_SOURCE_DIR}/cmake/coverage/counts.ld)
  target_link_libraries(raxel_numbers INTERFACE raxel_counts)
endif()
if(RAXEL_FUZZ)
  target_compile_options(raxel_numbers INTERFACE -g -fsanitize=fuzzer-no-link,address,undefined,float-cast-overflow
    -fno-sanitize-recover=all)
  target_link_options(raxel_numbers INTERFACE -fsanitize=address,undefined)
endif()
