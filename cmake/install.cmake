# `cmake --install` puts the library's headers (with the operation lists they include) and the
# platform stand-ins' headers in folders of their own, the versioned libraries, a CMake package
# (find_package(DAL_Manage) gives DAL_Manage::DAL_Manage) and a pkg-config file. Each file
# belongs to one component, one Debian package each (package.cmake): `runtime`, the versioned
# libraries; `development`, what building against them needs; `tool`, dalctl.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/DAL_Manage)

install(TARGETS DAL_Manage DAL_Platform EXPORT DAL_ManageTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
# Only the public headers: the three classes, the export macro and the operation lists the
# class declarations include, directly or through the lists they include. The byte, trace,
# table and builder helpers and the internal lists (families, devices) stay inside.
set(DAL_PUBLIC_HEADERS dalTarsel.h dal_pommet.h dal_osd.h dal_export.h)
function(dal_included_lists out)
  set(pending ${ARGN})
  set(found)
  while(pending)
    list(POP_FRONT pending file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/dal/${file})
    file(STRINGS ${PROJECT_SOURCE_DIR}/dal/${file} includes REGEX "^#include \"[^\"]+\\.def\"")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" list "${line}")
      if(NOT list IN_LIST found)
        list(APPEND found ${list})
        list(APPEND pending ${list})
      endif()
    endforeach()
  endwhile()
  set(${out} ${found} PARENT_SCOPE)
endfunction()
dal_included_lists(dal_public_lists ${DAL_PUBLIC_HEADERS})
foreach(file IN LISTS DAL_PUBLIC_HEADERS dal_public_lists)
  get_filename_component(subdir ${file} DIRECTORY)
  install(FILES dal/${file} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/DAL_Manage/${subdir}
    COMPONENT development)
endforeach()
install(DIRECTORY platform/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/DAL_Platform
  COMPONENT development FILES_MATCHING PATTERN "*.h")
install(EXPORT DAL_ManageTargets NAMESPACE DAL_Manage:: DESTINATION ${package_dir}
  COMPONENT development)

set(dal_qt_minimum ${dal_qt_minimum_${DAL_QT}})
configure_package_config_file(cmake/DAL_ManageConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/DAL_ManageConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/DAL_ManageConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/DAL_ManageConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/DAL_ManageConfigVersion.cmake DESTINATION ${package_dir}
  COMPONENT development)

# The pkg-config file finds its prefix from where it lies, so the tree can be installed anywhere.
# Qt 5 was built to reduce relocations and refuses code that is not position-independent; its
# CMake package adds -fPIC to its users' flags, its pkg-config file does not, so ours does.
set(dal_pc_position_independent "")
if(DAL_QT EQUAL 5)
  set(dal_pc_position_independent "-fPIC ")
endif()
file(RELATIVE_PATH pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/DAL_Manage.pc.in ${CMAKE_CURRENT_BINARY_DIR}/DAL_Manage.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/DAL_Manage.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# dalctl, its bash completion, where bash-completion looks for it, and its manual page.
install(TARGETS dalctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dalctl.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME dalctl COMPONENT tool)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dalctl.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
  COMPONENT tool)
