// The plugin that the program loads. It is built together with host_logger.cpp: the library finds
// Logger::print in the plugin, which is linked with it.

#include <libtarn/libtarn.hpp>

#include "../host/files.hpp"

using libtarn::model::LibTarnDocument;

/// Returns the number of managed objects of the document in a file, or -1 when it cannot be loaded.
extern "C" [[gnu::visibility("default")]] long countObjects(const char* path) {
  LibTarnDocument document;
  if (document.parse(readText(path), true) != 0) return -1;
  return static_cast<long>(document.getLibTarnCmData()->getManagedObjectNumber());
}
