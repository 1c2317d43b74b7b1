#pragma once

#include <string>

#include "Options.hpp"
#include "documents/DryRun.hpp"
#include "documents/Edit.hpp"
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

/// Adds `--dry-run` and `--json`.
void addDryRun(Options& options, DryRun& dryRun);

/// Adds the options of a command that changes a document.
void addEdit(Options& options, EditOptions& edit);

/// Adds the options that select the managed objects that a command changes.
void addSelectionForChange(Options& options, Selection& selection, EditOptions& edit);

/// Adds the options that select managed objects.
void addSelection(Options& options, Selection& selection);

/// Adds `--byte-order`.
void addNameOrder(Options& options, bool& byteOrder);

}  // namespace tarn
