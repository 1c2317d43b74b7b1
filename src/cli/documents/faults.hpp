#pragma once

#include <cstddef>
#include <vector>

#include "documents/checkFile.hpp"
#include "files/TextFile.hpp"
#include "libtarn/model/Diagnostic.hpp"
#include "output/Finding.hpp"

namespace tarn {

/// Faults of a text, and how many there are with those that a limit left out.
struct Faults {
  std::vector<Fault> list;
  std::size_t count = 0;
};

/// Reads a file again that `refusal` refused and finds the fault that it names, with its place. Of
/// malformed XML also the end tags that are wrong or missing. Where there is no memory for that,
/// only what `refusal` says is known.
Faults findFault(TextFile& file, const libtarn::model::Diagnostic& refusal,
                 const CheckScope& scope = {});

/// Reads a file again that `refusal` refused, or that is valid, and finds all its faults, up to the
/// limit of `scope`: those of malformed XML first, then in the order of their places.
Faults findAllFaults(TextFile& file, const libtarn::model::Diagnostic& refusal,
                     const CheckScope& scope);

}  // namespace tarn
