# Build rules shared by every subsystem: warnings, the no-exception library
# flags, the sanitizer and 32-bit variants, and the test helper.

add_compile_options(-Wall -Wextra -Werror)

if(ZM_M32)
  add_compile_options(-m32)
  add_link_options(-m32)
endif()

if(ZM_SANITIZE STREQUAL "fuzzer")
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(ZM_SANITIZE)
  add_compile_options(-fsanitize=${ZM_SANITIZE} -fno-omit-frame-pointer)
  if(ZM_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
  add_link_options(-fsanitize=${ZM_SANITIZE})
endif()

find_package(Threads REQUIRED)

# GoogleTest: the distribution's library for native builds, built from its
# sources for the 32-bit build (the distribution ships no 32-bit library).
if(BUILD_TESTING)
  if(ZM_M32)
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    if(NOT TARGET GTest::gtest_main)
      add_library(GTest::gtest_main ALIAS gtest_main)
    endif()
  else()
    find_package(GTest REQUIRED)
  endif()
endif()

# zm_add_library(<name> COMPONENT <text> SOURCES ... [DEPENDS ...])
# A static library of one subsystem. Library code never throws, and every
# allocation result is tested, so new may return null.
function(zm_add_library name)
  cmake_parse_arguments(ARG "" "COMPONENT;ROOT" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE -fno-exceptions -fcheck-new)
  target_compile_definitions(${name} PRIVATE ORVTARN_COMPONENT="${ARG_COMPONENT}")
  target_include_directories(${name} PUBLIC ${ARG_ROOT})
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS})
endfunction()

# zm_add_test(<name> LABELS ... SOURCES ... DEPENDS ... [TIMEOUT s])
function(zm_add_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "LABELS;SOURCES;DEPENDS" ${ARGN})
  if(NOT BUILD_TESTING)
    return()
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_compile_definitions(${name} PRIVATE ORVTARN_COMPONENT="test")
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} GTest::gtest_main Threads::Threads)
  add_test(NAME ${name} COMMAND ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT})
endfunction()
