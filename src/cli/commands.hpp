#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "CommandError.hpp"
#include "ObjectPattern.hpp"
#include "documentFile.hpp"

namespace tarn {

// The commands. A file "-" is standard input. Each writes to standard output, or where it is told
// to, and throws CommandError, with nothing written to a file.

/// Validates each file and says so, faults on standard error; or everything as JSON on standard
/// output, an object a file. Throws nothing for a file; returns the highest status.
struct CheckRequest {
  std::vector<std::string> files;
  bool all = false;         ///< Every violation, not only the first.
  std::size_t limit = 100;  ///< Most violations told for a file; 0 for as many as 64 MiB hold.
  bool json = false;
  unsigned jobs = 0;  ///< Documents at a time; 0 for as many as there are cores.
};
Status checkCommand(const CheckRequest& request);

/// The printed form of a document.
void printCommand(const std::string& path, const std::string& output);

/// The managed objects that match, in the order of their names.
enum class ListFormat { Table, Tsv, Json, Dn };
void listCommand(const std::string& path, const PatternOptions& mask, ListFormat format);

/// One object as XML, or the value that `name` says: a parameter, a list, an item or a component of
/// an item, "NAME[2].component" with items counted from 1. "" for the object.
void getCommand(const std::string& path, const std::string& distName, const std::string& name);

/// Changes the objects that match.
void setCommand(const std::string& path, const PatternOptions& mask, const PatternOptions& values,
                const Target& target);

/// Adds copies of the objects of another document, all or none.
void addCommand(const std::string& path, const std::string& objectPath, const Target& target);

/// Removes objects, all or none.
void removeCommand(const std::string& path, const std::vector<std::string>& distNames,
                   const Target& target);

/// Applies deltas to the source in their order.
struct MergeRequest {
  std::string source;
  std::vector<std::string> deltas;
  Target target;
  bool checkOnly = false;  ///< Nothing is written.
  bool validate = false;   ///< Source, deltas and result are validated.
};
void mergeCommand(const MergeRequest& request);

/// Figures of a document.
void statsCommand(const std::string& path, bool json);

/// The tree that the names of the objects spell, down to `depth` segments.
void treeCommand(const std::string& path, const std::string& distName, std::size_t depth);

/// One HTML page with the tree, the objects, a search and the violations.
void reportCommand(const std::string& path, const std::string& output);

}  // namespace tarn
