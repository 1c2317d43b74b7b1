# The files of `cmake --install`, in three components: those that programs need to run (runtime), those
# that they need to be built (development), and the command (command).

include(CMakePackageConfigHelpers)

target_include_directories(tarn PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
install(TARGETS tarn
  EXPORT tarnTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY DomXML/Include/ src/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/libtarn
  COMPONENT development
  FILES_MATCHING PATTERN *.hpp)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tarn)
configure_package_config_file(cmake/tarnConfig.cmake.in ${PROJECT_BINARY_DIR}/tarnConfig.cmake
  INSTALL_DESTINATION ${package_folder})
# Before 1.0 a minor version may change or remove parts of the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tarnConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tarnConfig.cmake ${PROJECT_BINARY_DIR}/tarnConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)
install(EXPORT tarnTargets NAMESPACE tarn:: DESTINATION ${package_folder} COMPONENT development)

# With the prefix of `cmake --install`.
set(prefix_of_package "@CMAKE_INSTALL_PREFIX@")
configure_file(cmake/tarn.pc.in ${PROJECT_BINARY_DIR}/tarn.pc.in @ONLY)
install(CODE "configure_file(
  \"${PROJECT_BINARY_DIR}/tarn.pc.in\" \"${PROJECT_BINARY_DIR}/tarn.pc\" @ONLY)"
  COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/tarn.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(DIRECTORY share/tarn DESTINATION ${CMAKE_INSTALL_DATADIR} COMPONENT development)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)

if(TARN_COMMAND)
  install(TARGETS tarn_command COMPONENT command)
  install(FILES share/completions/tarn.bash COMPONENT command
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME tarn)
  install(FILES share/completions/_tarn COMPONENT command
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES share/completions/tarn.fish COMPONENT command
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  # Those of the libraries that are compiled into the command.
  install(DIRECTORY licenses DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT command)
  find_program(TARN_SCDOC scdoc)
  if(TARN_SCDOC)
    set(manual ${PROJECT_BINARY_DIR}/tarn.1)
    add_custom_command(OUTPUT ${manual}
      COMMAND ${TARN_SCDOC} < ${PROJECT_SOURCE_DIR}/docs/man/tarn.1.scd > ${manual}
      DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/tarn.1.scd
      VERBATIM)
    add_custom_target(tarn_manual DEPENDS ${manual})
    add_dependencies(tarn_command tarn_manual)
    install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT command)
  endif()
endif()
if(PROJECT_IS_TOP_LEVEL)
  include(cmake/packages.cmake)
endif()
