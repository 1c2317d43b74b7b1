# CPack runs this after it has installed the files of each package and before it makes the packages.

foreach(pair IN LISTS CPACK_TARN_PACKAGES)
  string(REPLACE "=" ";" pair "${pair}")
  list(GET pair 0 component)
  list(GET pair 1 package)
  set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr/share)
  set(documents ${share}/doc/${package})
  file(MAKE_DIRECTORY ${documents})
  file(READ ${CPACK_TARN_SOURCE_DIR}/LICENSE copyright)
  file(GLOB licenses ${CPACK_TARN_SOURCE_DIR}/licenses/*.txt)
  if(component STREQUAL "command")
    foreach(license IN LISTS licenses)
      file(READ ${license} text)
      string(APPEND copyright "\n----\n\nPart of the command:\n\n${text}")
    endforeach()
  endif()
  file(WRITE ${documents}/copyright "${copyright}")
  string(TIMESTAMP date "%a, %d %b %Y 00:00:00 +0000" UTC)
  file(WRITE ${documents}/changelog.Debian
    "libtarn (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
    "  * Release ${CPACK_PACKAGE_VERSION}; what changed is in CHANGELOG.md of the sources.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  file(GLOB_RECURSE manuals ${share}/man/*.1)
  execute_process(COMMAND gzip -9n ${documents}/changelog.Debian ${manuals}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
