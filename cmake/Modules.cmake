# One module, one directory under src/, one static library. A module's sources are the *.cpp
# files of its directory tree (globbed, so a new file needs no edit here). Its headers are
# reached as "<module>/Header.hpp" through an include root of its own that holds nothing but
# the module: a library sees the headers of the modules it declares and of nothing else.

option(GALDRINE_WARNINGS_AS_ERRORS "Turn compiler warnings into errors (the project's presets and CI)" OFF)

# -Wconversion and -Wsign-conversion guard the size and offset arithmetic of the decoders.
set(GALDRINE_WARNING_FLAGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor)
if(GALDRINE_WARNINGS_AS_ERRORS)
  list(APPEND GALDRINE_WARNING_FLAGS -Werror)
endif()

# Hardening of what the project builds, in every configuration that optimises: checked buffer
# functions, stack protection, position independence and a read-only relocation table.
option(GALDRINE_HARDENING "Build with _FORTIFY_SOURCE, stack protection, PIE and full RELRO" ON)
if(GALDRINE_HARDENING)
  include(CheckPIESupported)
  check_pie_supported()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  add_compile_options(-fstack-protector-strong)
  if(NOT GALDRINE_SANITIZE AND NOT GALDRINE_FUZZ)
    # The sanitizers check memory themselves and dislike the fortified functions.
    add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  endif()
  add_link_options(-Wl,-z,relro,-z,now)
endif()

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

# galdrine_include_root(<directory> <name>) gives an include directory in which "<name>/" is
# <directory> and nothing else is.
function(galdrine_include_root out directory name)
  set(root "${PROJECT_BINARY_DIR}/include/${name}")
  file(MAKE_DIRECTORY "${root}")
  if(NOT EXISTS "${root}/${name}")
    file(CREATE_LINK "${directory}" "${root}/${name}" SYMBOLIC)
  endif()
  set(${out} "${root}" PARENT_SCOPE)
endfunction()

# galdrine_add_module(<name> [DEPENDS <module>...] [PUBLIC_LIBRARIES ...] [PRIVATE_LIBRARIES ...])
# DEPENDS names the modules whose headers this one includes; the edge check holds every
# include to that list.
function(galdrine_add_module name)
  cmake_parse_arguments(ARG "" "DIRECTORY" "DEPENDS;PUBLIC_LIBRARIES;PRIVATE_LIBRARIES" ${ARGN})
  if(NOT ARG_DIRECTORY)
    set(ARG_DIRECTORY "${PROJECT_SOURCE_DIR}/src/${name}")
  endif()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${ARG_DIRECTORY}/*.cpp")
  list(FILTER sources EXCLUDE REGEX "/galdrine-[a-z-]+\\.cpp$")
  set(target galdrine_${name})
  add_library(${target} STATIC ${sources})
  galdrine_include_root(include_root "${ARG_DIRECTORY}" ${name})
  target_include_directories(${target} PUBLIC "${include_root}")
  list(TRANSFORM ARG_DEPENDS PREPEND galdrine_ OUTPUT_VARIABLE module_libraries)
  target_link_libraries(${target} PUBLIC ${module_libraries} ${ARG_PUBLIC_LIBRARIES} PRIVATE ${ARG_PRIVATE_LIBRARIES})
  galdrine_apply_warnings(${target})
  string(REPLACE ";" " " declared "${ARG_DEPENDS}")
  set_property(GLOBAL APPEND PROPERTY GALDRINE_MODULE_EDGES "${name}: ${declared}")
endfunction()

# galdrine_write_module_edges(<file>) writes one line per module, "name: dependency ...", for
# the edge check.
function(galdrine_write_module_edges file)
  get_property(edges GLOBAL PROPERTY GALDRINE_MODULE_EDGES)
  set(text "")
  foreach(edge IN LISTS edges)
    string(APPEND text "${edge}\n")
  endforeach()
  file(WRITE "${file}" "${text}")
endfunction()
