# What every target of the project has in common, and the two shapes of target it has: a room of src/ and its tests.

set(NORAVA_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")

add_library(norava_flags INTERFACE)
target_compile_features(norava_flags INTERFACE cxx_std_20)
target_include_directories(norava_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(norava_flags INTERFACE
    -Wall -Wextra -Wshadow -Wconversion -Werror
    # The same input gives the same bytes on every compiler: no fused multiply-add, no relaxed arithmetic.
    -ffp-contract=off -fno-fast-math -fno-math-errno)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Passing the wide vector type between always-inlined functions of one file is sound; the note is noise.
    target_compile_options(norava_flags INTERFACE -Wno-psabi)
  endif()
endif()
if(NORAVA_SANITIZE)
  target_compile_options(norava_flags INTERFACE -fsanitize=${NORAVA_SANITIZE} -fno-omit-frame-pointer -g)
  target_link_options(norava_flags INTERFACE -fsanitize=${NORAVA_SANITIZE})
  if(NORAVA_SANITIZE MATCHES "undefined|overflow")
    target_compile_options(norava_flags INTERFACE -fno-sanitize-recover=all)
  endif()
endif()
if(NORAVA_FUZZER)
  # The fuzzer sees which paths an input takes, and the library's containers look at their indices.
  target_compile_options(norava_flags INTERFACE -fsanitize=fuzzer-no-link)
  if(NOT NORAVA_SANITIZE MATCHES "address")
    # The fast one does without the operands of comparisons, which take half of its time.
    target_compile_options(norava_flags INTERFACE -fno-sanitize-coverage=trace-cmp,indirect-calls)
  endif()
  target_compile_definitions(norava_flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# norava_room(<name> <rooms it includes> ...): the static library of the folder this is called in.
# It links exactly the rooms that it may include.
function(norava_room name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  if(NOT sources)
    return()
  endif()
  add_library(norava_${name} STATIC ${sources})
  set_target_properties(norava_${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(norava_${name} PUBLIC norava_flags)
  foreach(room IN LISTS ARGN)
    target_link_libraries(norava_${name} PUBLIC norava_${room})
  endforeach()
endfunction()

# norava_test(<name> <libraries> ... [SLOW <pattern of tests> ...]): one GoogleTest program from every source of the
# folder this is called in. The tests named after SLOW get that label too: one thread's long work, which takes minutes
# under the thread sanitizer and cannot race with itself. They run everywhere else.
function(norava_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "" "SLOW")
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  add_executable(test_${name} ${sources})
  target_include_directories(test_${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(test_${name} PRIVATE norava_flags ${test_UNPARSED_ARGUMENTS}
    GTest::gtest GTest::gmock GTest::gtest_main)
  string(JOIN ":" slow ${test_SLOW})
  if(slow)
    gtest_discover_tests(test_${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
      TEST_FILTER "${slow}" TEST_LIST test_${name}_slow PROPERTIES LABELS "${name};slow")
  endif()
  gtest_discover_tests(test_${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    TEST_FILTER "-${slow}" PROPERTIES LABELS ${name})
endfunction()
