# What `cmake --install` lays down: the library for a switch and, for a workstation, the reference
# platform with the emulator and the tool. Each is found by find_package(FiconCmi) or pkg-config.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/FiconCmi)
set(exported ficon_cmi ficon_cmi_static)
set(pkgconfig_files ficon_cmi)
install(FILES feature/ficon/cmi/ficon_cmi.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

if(TARGET ficon_platform)
  list(APPEND exported ficon_platform)
  list(APPEND pkgconfig_files ficon_platform)
  install(FILES platform/reference/transport/endpoint.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ficon/transport)
endif()
foreach(product ficon_mtrack fcd-emulator ficonctl)
  if(TARGET ${product})
    install(TARGETS ${product})
  endif()
endforeach()
if(NOT FICON_LIBRARY_ONLY)
  install(DIRECTORY docs/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES tools/ficonctl/completion/ficonctl.bash RENAME ficonctl
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()

install(TARGETS ${exported} EXPORT FiconCmi)
install(EXPORT FiconCmi NAMESPACE FiconCmi:: FILE FiconCmiTargets.cmake DESTINATION ${package_dir})
configure_package_config_file(cmake/FiconCmiConfig.cmake.in FiconCmiConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(FiconCmiConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/FiconCmiConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/FiconCmiConfigVersion.cmake DESTINATION ${package_dir})

# Relative to the file itself, so that the installed tree may be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /${pkgconfig_dir} /)
foreach(name IN LISTS pkgconfig_files)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_dir})
endforeach()
