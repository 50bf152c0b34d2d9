# The Debian packages, one for each component: what they hold beyond what is installed anyway, and what they say of
# themselves. tools/package.sh makes them. The version is the project's.

if(BUILD_SHARED_LIBS OR NOT QWIXTD_BUILD_SIMULATOR OR NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  message(FATAL_ERROR "QWIXTD_PACKAGES needs a static library, the simulator and the prefix /usr, as in the preset package")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL qwixtd VorletProxies simulator)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/QwixtCompressDocuments.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_PACKAGE_CONTACT "The maintainers of qwixtd <qwixtd@vorlet.example>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_CROSSCOMPILING)
  # The libraries that the device's programs need are found in its root, and so is what dpkg knows of them (DPKG_ADMINDIR).
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${QWIXTD_DEBIAN_ARCHITECTURE})
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} ${CMAKE_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()

# The first line of each description is the package's synopsis.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_QWIXTD_PACKAGE_NAME qwixtd)
set(CPACK_DEBIAN_QWIXTD_PACKAGE_SECTION net)
set(CPACK_DEBIAN_QWIXTD_PACKAGE_DEPENDS
  "adduser, ca-certificates, default-dbus-system-bus | dbus-system-bus")
set(CPACK_DEBIAN_QWIXTD_DESCRIPTION "keeps a device's widgets registered as remote applications
Widgets of the device ask this daemon over the D-Bus system bus to register,
update or delete them. It queues the work, sends it to the developer server
over HTTPS when the device is set up and online, repeats what fails, and
announces what came of it.")

set(CPACK_DEBIAN_VORLETPROXIES_PACKAGE_NAME libvorletproxies-dev)
set(CPACK_DEBIAN_VORLETPROXIES_PACKAGE_SECTION libdevel)
if(QT_VERSION_MAJOR EQUAL 6)
  set(CPACK_DEBIAN_VORLETPROXIES_PACKAGE_DEPENDS "qt6-base-dev (>= ${QT_VERSION})")
else()
  set(CPACK_DEBIAN_VORLETPROXIES_PACKAGE_DEPENDS "qtbase5-dev (>= ${QT_VERSION})")
endif()
set(CPACK_DEBIAN_VORLETPROXIES_DESCRIPTION "D-Bus services of the device as client classes
One class for each interface of the device's services: calls, subscriptions to
signals, and conversion of D-Bus values. Headers, a static library, and files
for CMake and pkg-config.")

set(CPACK_DEBIAN_SIMULATOR_PACKAGE_NAME qwixt-devicesim)
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_SUGGESTS openssl)
set(CPACK_DEBIAN_SIMULATOR_DESCRIPTION "simulated device and developer server to run qwixtd against
The device's services on a bus and the developer server behind HTTPS, driven by
commands: set the device up, take the internet away, let the server fail, and
see every call, signal and request.")

# --- What is in the packages alone --------------------------------------------------------------------------------

set(packaging ${PROJECT_SOURCE_DIR}/packaging/debian)
set(documents ${PROJECT_BINARY_DIR}/changelogs)
set(scripts ${packaging}/postinst ${packaging}/prerm ${packaging}/postrm)
set(CPACK_DEBIAN_QWIXTD_PACKAGE_CONTROL_EXTRA ${packaging}/conffiles ${scripts})
install(FILES ${PROJECT_SOURCE_DIR}/packaging/qwixtd.default
  DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/default RENAME qwixtd COMPONENT qwixtd)

# The section of this version in CHANGELOG.md, in the form and the width of Debian's.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
file(READ ${PROJECT_SOURCE_DIR}/CHANGELOG.md changes)
if(NOT changes MATCHES "\n## ${PROJECT_VERSION},[^\n]*(\n+- .*)")
  message(FATAL_ERROR "CHANGELOG.md has no section \"## ${PROJECT_VERSION}, ...\" with what has changed")
endif()
string(REGEX REPLACE "\n## .*" "\n" changes "${CMAKE_MATCH_1}")
string(STRIP "${changes}" changes)
string(REPLACE "\n  " " " changes "${changes}")
string(REGEX REPLACE "(^|\n)- " "\\1  * " changes "${changes}")
file(WRITE ${documents}/changes "${changes}\n")
execute_process(
  COMMAND fold -s -w 76 ${documents}/changes
  COMMAND sed -e "s/ *$//" -e "s/^[^ ]/    &/"
  OUTPUT_VARIABLE changes
  COMMAND_ERROR_IS_FATAL ANY)
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(directory ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package})
  file(WRITE ${documents}/${package}/changelog
    "${package} (${PROJECT_VERSION}) unstable; urgency=medium\n\n${changes}\n -- ${CPACK_PACKAGE_CONTACT}  ${now}\n")
  install(FILES ${packaging}/copyright ${documents}/${package}/changelog DESTINATION ${directory} COMPONENT ${component})
  if(EXISTS ${packaging}/${package}.lintian-overrides)
    install(FILES ${packaging}/${package}.lintian-overrides
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${package} COMPONENT ${component})
  endif()
endforeach()

include(CPack)
