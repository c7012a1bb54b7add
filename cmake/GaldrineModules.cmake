# One directory, one static library. Sources are the directory's *.cpp files, so adding a
# file needs no edit here; headers are reached as "Module/Header.hpp" from the project root.

set(GALDRINE_WARNING_FLAGS -Wall -Wextra -Wpedantic -Werror)

if(GALDRINE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()
if(GALDRINE_FUZZ)
  # Every library is instrumented for coverage; only the fuzz programs link the driver.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

function(galdrine_apply_warnings target)
  target_compile_options(${target} PRIVATE ${GALDRINE_WARNING_FLAGS})
endfunction()

function(galdrine_add_module name)
  cmake_parse_arguments(ARG "" "" "PUBLIC_LIBRARIES;PRIVATE_LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${name}/*.cpp")
  if(sources)
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC_LIBRARIES} PRIVATE ${ARG_PRIVATE_LIBRARIES})
    target_compile_definitions(${name} PRIVATE ${GALDRINE_RESOURCE_DEFINITIONS})
    galdrine_apply_warnings(${name})
  else()
    # A module whose sources are still to come: headers only.
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} INTERFACE ${ARG_PUBLIC_LIBRARIES})
  endif()
endfunction()

# One test program per module: tests/<Module>/*.cpp, linked with the module and the shared
# test support, each test case registered with CTest.
function(galdrine_add_test_suite module)
  cmake_parse_arguments(ARG "" "" "LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/${module}/*.cpp")
  if(NOT sources)
    return()
  endif()
  add_executable(${module}Tests ${sources})
  galdrine_apply_warnings(${module}Tests)
  # GoogleTest and the standard headers are most of what a test file parses: once per program.
  # Under the sanitizers the precompiled header costs more than it saves.
  if(NOT GALDRINE_SANITIZE)
    target_precompile_headers(${module}Tests PRIVATE <gtest/gtest.h> <gmock/gmock.h> <algorithm> <expected>
                              <filesystem> <functional> <map> <optional> <set> <span> <string> <vector>)
  endif()
  target_link_libraries(${module}Tests PRIVATE ${module} GaldrineTestSupport ${ARG_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_definitions(${module}Tests PRIVATE ${GALDRINE_RESOURCE_DEFINITIONS})
  if(TARGET galdrine-recovery)
    # End-to-end suites run the built program as a subprocess.
    target_compile_definitions(${module}Tests PRIVATE GALDRINE_RECOVERY_EXECUTABLE="$<TARGET_FILE:galdrine-recovery>")
    add_dependencies(${module}Tests galdrine-recovery)
  endif()
  gtest_discover_tests(${module}Tests DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600)
endfunction()
