#pragma once

/// Marks what the shared library exports. Everything else is hidden: it is free to change, and
/// calls within the library stay direct.
#define TARN_API __attribute__((visibility("default")))
