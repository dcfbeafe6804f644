# SPDX-License-Identifier: MIT
# Where things are installed, and how projects find them: find_package(raxel), pkg-config.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The filter has a folder of its own beside the libraries. Programs find it from where they lie, so that
# an installation can be moved, or else where it was installed.
set(RAXEL_FILTER_DIR ${CMAKE_INSTALL_LIBDIR}/raxel)
set(RAXEL_INSTALLED_FILTER ${CMAKE_INSTALL_FULL_LIBDIR}/raxel/raxel.so)
file(RELATIVE_PATH RAXEL_FILTER_FROM_PROGRAM ${CMAKE_INSTALL_FULL_BINDIR} ${RAXEL_INSTALLED_FILTER})
set(RAXEL_MADE ${PROJECT_BINARY_DIR}/share)

# raxel_pkg_config(TEMPLATE): installs a .pc file. Its places are relative to it.
function(raxel_pkg_config template)
  set(folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH include_from_pc ${folder} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
  get_filename_component(name ${template} NAME_WLE)
  configure_file(${template} ${RAXEL_MADE}/${name} @ONLY)
  install(FILES ${RAXEL_MADE}/${name} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

if(RAXEL_INSTALL)
  set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/raxel)
  configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/raxel-config.cmake.in ${RAXEL_MADE}/raxel-config.cmake
    INSTALL_DESTINATION ${folder} NO_SET_AND_CHECK_MACRO
    PATH_VARS CMAKE_INSTALL_INCLUDEDIR RAXEL_FILTER_DIR)
  write_basic_package_version_file(${RAXEL_MADE}/raxel-config-version.cmake COMPATIBILITY SameMajorVersion)
  install(FILES ${RAXEL_MADE}/raxel-config.cmake ${RAXEL_MADE}/raxel-config-version.cmake DESTINATION ${folder})
endif()
