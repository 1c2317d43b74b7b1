#pragma once

#include <ostream>  // for values that are not texts

// The location of a log line as one literal, "src/libTARN/.../File.cpp:LINE". The build removes the
// path of the source tree.
#define TARN_LOG_STRINGIZE_(value) #value
#define TARN_LOG_STRINGIZE(value) TARN_LOG_STRINGIZE_(value)
#define TARN_LOG_LOCATION __FILE__ ":" TARN_LOG_STRINGIZE(__LINE__)
