#pragma once

#include <string>

#include "Options.hpp"
#include "documents/Selection.hpp"
#include "files/Destination.hpp"

namespace tarn {

// Options that several commands share, one function for each part of a request.

/// Adds FILE, the document that a command reads.
void addFile(Options& options, std::string& file);

/// Adds `--output`.
void addOutput(Options& options, std::string& output);

/// Adds `--output` and `--in-place`.
void addTarget(Options& options, Target& target);

/// Adds the options that select managed objects. `prefix` renames those that the command uses for
/// something else: "mask-" gives `--mask-class`.
void addSelection(Options& options, const std::string& prefix, Selection& selection);

}  // namespace tarn
