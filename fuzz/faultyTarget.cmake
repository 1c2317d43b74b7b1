# add_faulty_target(NAME [SOURCE...]): the program faulty_NAME is fuzz_NAME with faults/NAME.patch.
#
# Only sources with the fault are compiled again: each SOURCE, relative to the root of the repository, or
# the patched file when there is none. An overlay of the compiler's file system replaces the original
# file with the patched one, so every include of the file has the fault. The linker takes these objects
# first, and the rest from the library's archive.
function(add_faulty_target name)
  set(patch ${CMAKE_CURRENT_SOURCE_DIR}/faults/${name}.patch)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/planted/${name})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${patch})
  file(STRINGS ${patch} original REGEX "^\\+\\+\\+ ")
  string(REGEX REPLACE "^\\+\\+\\+ ([^ \t]+).*" "\\1" original "${original}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${tarn_sources}/${original})

  cmake_path(GET original FILENAME file)
  file(MAKE_DIRECTORY ${folder})
  execute_process(
    COMMAND patch --quiet --force --output=${folder}/${file}.new ${tarn_sources}/${original} ${patch}
    COMMAND_ERROR_IS_FATAL ANY)
  file(COPY_FILE ${folder}/${file}.new ${folder}/${file} ONLY_IF_DIFFERENT)

  # A public header goes by its name below the folder of links, too.
  string(REGEX REPLACE "^(DomXML/Include|src/include)/" "${tarn_headers}/libtarn/" by_link
    ${original})
  set(entries)
  foreach(path IN ITEMS ${tarn_sources}/${original} ${by_link})
    if(IS_ABSOLUTE ${path})
      list(APPEND entries
        "{\"type\": \"file\", \"name\": \"${path}\", \"external-contents\": \"${folder}/${file}\"}")
    endif()
  endforeach()
  list(JOIN entries ", " entries)
  file(CONFIGURE OUTPUT ${folder}/overlay.yaml
    CONTENT "{\"version\": 0, \"use-external-names\": false, \"roots\": [@entries@]}\n" @ONLY)

  set(sources ${ARGN})
  if(NOT sources)
    set(sources ${original})
  endif()
  set(stems)
  foreach(source IN LISTS sources)
    cmake_path(GET source STEM stem)
    list(APPEND stems "/${stem}\\.cpp")
  endforeach()
  list(JOIN stems "|" stems)
  list(TRANSFORM sources PREPEND ${tarn_sources}/)
  add_executable(faulty_${name} ${sources}
    $<FILTER:$<TARGET_OBJECTS:fuzz_${name}>,EXCLUDE,${stems}>)
  target_compile_options(faulty_${name} PRIVATE -ivfsoverlay ${folder}/overlay.yaml)
  set_property(SOURCE ${sources} APPEND PROPERTY OBJECT_DEPENDS ${folder}/${file})
endfunction()
