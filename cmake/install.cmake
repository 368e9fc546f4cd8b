# `cmake --install` puts the library's headers (with the operation lists they include) and the
# platform stand-ins' headers in folders of their own, the versioned libraries, a CMake package
# (find_package(DAL_Manage) gives DAL_Manage::DAL_Manage) and a pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/DAL_Manage)

install(TARGETS DAL_Manage DAL_Platform EXPORT DAL_ManageTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# Only the public headers: the three classes, the export macro and the operation lists the
# class declarations include. The byte, trace, table and builder helpers stay inside.
set(DAL_PUBLIC_HEADERS dal/dalTarsel.h dal/dal_pommet.h dal/dal_osd.h dal/dal_export.h)
install(FILES ${DAL_PUBLIC_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/DAL_Manage)
install(DIRECTORY dal/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/DAL_Manage
  FILES_MATCHING PATTERN "*.def" PATTERN "families.def" EXCLUDE)
install(DIRECTORY platform/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/DAL_Platform
  FILES_MATCHING PATTERN "*.h")
install(EXPORT DAL_ManageTargets NAMESPACE DAL_Manage:: DESTINATION ${package_dir})

set(dal_qt_minimum ${dal_qt_minimum_${DAL_QT}})
configure_package_config_file(cmake/DAL_ManageConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/DAL_ManageConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/DAL_ManageConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/DAL_ManageConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/DAL_ManageConfigVersion.cmake DESTINATION ${package_dir})

# The pkg-config file finds its prefix from where it lies, so the tree can be installed anywhere.
file(RELATIVE_PATH pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/DAL_Manage.pc.in ${CMAKE_CURRENT_BINARY_DIR}/DAL_Manage.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/DAL_Manage.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# dalctl and its bash completion, where bash-completion looks for it.
install(TARGETS dalctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dalctl.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME dalctl)
