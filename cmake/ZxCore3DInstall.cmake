# The install tree: libraries, headers as the tree of src/ stands, CMake package, pkg-config module.

include(CMakePackageConfigHelpers)

# The libraries find each other, and the program finds them, wherever the tree is put.
set_target_properties(ZxCore3D ZxBaseKit ZxRunKit ZxPixelKit ZxDrawKit PROPERTIES INSTALL_RPATH "$ORIGIN")
if(TARGET zxrender)
  set_target_properties(zxrender PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()

install(TARGETS ZxCore3D EXPORT ZxCore3DTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")

install(EXPORT ZxCore3DTargets NAMESPACE ZxCore3D::
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/ZxCore3D")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZxCore3DConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/ZxCore3DConfig.cmake"
  INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/ZxCore3D")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZxCore3DConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZxCore3DConfig.cmake"
              "${PROJECT_BINARY_DIR}/ZxCore3DConfigVersion.cmake"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/ZxCore3D")
file(RELATIVE_PATH ZX_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" ZX_PC_TO_PREFIX "${ZX_PC_TO_PREFIX}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/ZxCore3D.pc.in" "${PROJECT_BINARY_DIR}/ZxCore3D.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/ZxCore3D.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
