# What the library itself is built on, found once for all directories. A project around this one links
# the library and so meets the names of what its headers need.

set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ON)

# One type of Boost's headers stands in a public header. Newer CMake leaves finding it to Boost.
if(POLICY CMP0167)
  cmake_policy(SET CMP0167 NEW)
endif()
find_package(Boost REQUIRED)

# The library needs Core alone, of Qt 5 or, where QT_VERSION_MAJOR says so or no Qt 5 is there, Qt 6.
if(QT_VERSION_MAJOR)
  find_package(Qt${QT_VERSION_MAJOR} REQUIRED COMPONENTS Core)
else()
  find_package(QT NAMES Qt5 Qt6 REQUIRED COMPONENTS Core)
  find_package(Qt${QT_VERSION_MAJOR} REQUIRED COMPONENTS Core)
endif()
set(ZX_QT_CORE Qt${QT_VERSION_MAJOR}::Core)

unset(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL)
