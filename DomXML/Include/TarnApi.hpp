#pragma once

/// Stands before what hosts may use of the shared library: everything else in it is hidden, so that
/// it is free to change, and calls within the library need no detour.
#define TARN_API __attribute__((visibility("default")))
