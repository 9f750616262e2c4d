# Flags and target shapes that every directory of the project shares.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

# Pixels and results are pinned to the last bit: a product and a sum are two roundings, everywhere.
add_compile_options(-ffp-contract=off)
# A plain char has a sign where the processor's convention is that it has none, too.
if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  add_compile_options(-fsigned-char)
endif()

# Paths to look for libraries in are relative to the looking one, so that no folder's name stands in a library.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

option(ZX_SANITIZE "Address and undefined-behaviour sanitizers" OFF)
if(ZX_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# For scripts/coverage.sh: counts each line and branch that runs, but for those of the tests and of other libraries.
option(ZX_COVERAGE "Count what runs, for gcov" OFF)
if(ZX_COVERAGE)
  add_compile_options(-O0 -g1 --coverage -fprofile-update=atomic
    "-fprofile-exclude-files=^(/usr|${PROJECT_SOURCE_DIR}/(tests|siblings/[^/]*/tests))/")
  add_link_options(--coverage)
endif()

if(ZX_BUILD_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "ZX_BUILD_FUZZ needs clang: -DCMAKE_CXX_COMPILER=clang++")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

option(ZX_WARNINGS_AS_ERRORS "Warnings of the libraries and tools end the build" OFF)
set(ZX_WARNINGS -Wall -Wextra -Wconversion)
if(ZX_WARNINGS_AS_ERRORS)
  list(APPEND ZX_WARNINGS -Werror)
endif()

# One include root for the build that looks like the installed one: <ZxCore3D/group/Name.h>.
set(ZX_INCLUDE_ROOT "${PROJECT_BINARY_DIR}/include")
file(MAKE_DIRECTORY "${ZX_INCLUDE_ROOT}")
file(CREATE_LINK "${PROJECT_SOURCE_DIR}/src" "${ZX_INCLUDE_ROOT}/ZxCore3D" SYMBOLIC)

# zx_harden(NAME): a library's checks of string and memory calls, a guard behind local arrays, relocations that are
# read-only before it runs, and a stack without execution. Two builds in two folders give the same bytes, as no path of a
# folder is compiled in.
function(zx_harden name)
  # The sanitizers look closer than these checks, and their reports name whole paths.
  if(NOT ZX_SANITIZE AND NOT ZX_BUILD_FUZZ)
    set(optimised "CONFIG:Release,RelWithDebInfo,MinSizeRel")
    target_compile_options(${name} PRIVATE
      -fstack-protector-strong
      "$<$<${optimised}>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>"
      "$<$<${optimised}>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build;-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>")
  endif()
  get_target_property(type ${name} TYPE)
  if(type STREQUAL "SHARED_LIBRARY")
    target_link_options(${name} PRIVATE "LINKER:-z,relro,-z,now,-z,noexecstack")
  endif()
endfunction()

# zx_version(NAME): file name and soname of a library, from the one place that states the version.
function(zx_version name)
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()

# zx_sibling(NAME [DEPENDS lib...]): a shared library from include/NAME and src/, with its tests.
function(zx_sibling name)
  cmake_parse_arguments(ARG "" "" "PUBLIC;PRIVATE" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp")
  add_library(${name} SHARED ${sources})
  add_library(ZxCore3D::${name} ALIAS ${name})
  target_compile_options(${name} PRIVATE ${ZX_WARNINGS})
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_include_directories(${name} PUBLIC
    "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
  file(GLOB headers CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/include/${name}/*.h")
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS "${CMAKE_CURRENT_SOURCE_DIR}/include" FILES ${headers})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  zx_version(${name})
  zx_harden(${name})
  if(ZX_INSTALL)
    install(TARGETS ${name} EXPORT ZxCore3DTargets
            LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
            FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
  endif()
endfunction()

# zx_room(NAME LIBS lib...): the objects of one directory of src/, which tests can link one by one.
function(zx_room name)
  cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp")
  add_library(zx_${name} OBJECT ${sources})
  target_compile_options(zx_${name} PRIVATE ${ZX_WARNINGS})
  target_include_directories(zx_${name} PUBLIC "${ZX_INCLUDE_ROOT}")
  target_link_libraries(zx_${name} PUBLIC ${ARG_LIBS})
  zx_harden(zx_${name})
endfunction()
