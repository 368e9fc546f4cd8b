# `cpack -G DEB` in a build (`make package`) writes one Debian package per install component:
# the runtime (the versioned libraries, named for the soname), the development files and
# dalctl. Their library dependencies come from dpkg-shlibdeps; the development package also
# needs the runtime of the same version and the Qt the library was built with, dalctl needs the
# runtime. A Qt 6 build's packages carry "qt6" in their names and conflict with the Qt 5
# build's, whose files they share.
set(DAL_PACKAGE_MAINTAINER "libDAL_Manage maintainers <dal-manage@example.com>"
  CACHE STRING "Maintainer named in the Debian packages")

function(dal_package_names qt prefix)
  set(tag "")
  set(${prefix}_runtime libdal-manage${PROJECT_VERSION_MAJOR} PARENT_SCOPE)
  if(qt EQUAL 6)
    set(tag -qt6)
    set(${prefix}_runtime libdal-manage-qt6-${PROJECT_VERSION_MAJOR} PARENT_SCOPE)
  endif()
  set(${prefix}_development libdal-manage${tag}-dev PARENT_SCOPE)
  set(${prefix}_tool dalctl${tag} PARENT_SCOPE)
endfunction()
dal_package_names(${DAL_QT} dal)
if(DAL_QT EQUAL 5)
  dal_package_names(6 other)
else()
  dal_package_names(5 other)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libdal-manage)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${DAL_PACKAGE_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tool)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# dalctl's platform library is found in the build; the runtime package it comes in is named by
# the component dependency.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The runtime's shlibs file tells other packages' dpkg-shlibdeps which package brings each soname.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${dal_runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONFLICTS ${other_runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "data-access library turning control requests into device commands (Qt ${DAL_QT})
libDAL_Manage turns a video-control application's requests into the exact
commands each attached device family understands and appends them to the
application's send queue. This package holds the shared library and the
stand-ins for the application's model, utility and business libraries.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${dal_development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${dal_qt_package_${DAL_QT}})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_CONFLICTS ${other_development})
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "data-access library for device commands - development files (Qt ${DAL_QT})
The headers of libDAL_Manage's three classes and of the platform stand-ins,
the CMake package (find_package(DAL_Manage)) and the pkg-config file needed
to build an application against libDAL_Manage.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ${dal_tool})
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_CONFLICTS ${other_tool})
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "encoder and decoder of libDAL_Manage's device commands (Qt ${DAL_QT})
dalctl shows what libDAL_Manage queues for an operation on each device
family, names the operation that queued a record, annotates logs and writes
a protocol reference page.")

# Every package documents its copyright and its version in its own folder, as Debian asks; a
# plain `cmake --install` leaves them out.
string(TIMESTAMP dal_changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component runtime development tool)
  set(dal_package ${dal_${component}})
  set(changelog ${CMAKE_CURRENT_BINARY_DIR}/debian/${dal_package}/changelog)
  configure_file(cmake/debian/changelog.in ${changelog} @ONLY)
  add_custom_command(OUTPUT ${changelog}.gz COMMAND gzip -9nfk ${changelog} DEPENDS ${changelog}
    VERBATIM)
  list(APPEND dal_changelogs ${changelog}.gz)
  install(FILES cmake/debian/copyright ${changelog}.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${dal_package} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
add_custom_target(dal_changelogs ALL DEPENDS ${dal_changelogs})
if(DAL_QT EQUAL 5)
  install(FILES cmake/debian/libdal-manage-dev.lintian-overrides
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${dal_development}
    COMPONENT development EXCLUDE_FROM_ALL)
endif()

include(CPack)
