# A copy of the library's sources in the build folder, with the fault TARN_FAULT planted in it.
# Only files that change are written, so that little is built again when the fault is another.

set(tarn_sources ${PROJECT_BINARY_DIR}/planted)
file(GLOB_RECURSE originals CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
  DomXML/*.cpp DomXML/*.hpp src/*.cpp src/*.hpp)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${originals})
set(patched)
if(NOT TARN_FAULT STREQUAL "none")
  set(patch ${PROJECT_SOURCE_DIR}/fuzz/faults/${TARN_FAULT}.patch)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${patch})
  file(STRINGS ${patch} patched REGEX "^\\+\\+\\+ ")
  list(TRANSFORM patched REPLACE "^\\+\\+\\+ ([^ \t]+).*" "\\1")
endif()
foreach(original IN LISTS originals)
  if(NOT original IN_LIST patched)
    cmake_path(GET original PARENT_PATH folder)
    file(MAKE_DIRECTORY ${tarn_sources}/${folder})
    file(COPY_FILE ${PROJECT_SOURCE_DIR}/${original} ${tarn_sources}/${original}
      ONLY_IF_DIFFERENT)
  endif()
endforeach()
foreach(file IN LISTS patched)
  execute_process(
    COMMAND patch --quiet --force --output=${tarn_sources}/${file}
      ${PROJECT_SOURCE_DIR}/${file} ${patch}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
