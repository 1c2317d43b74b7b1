#pragma once

#include <ostream>  // what is no text is streamed into a line

// The place of a log line as one literal, "src/libTARN/.../File.cpp:LINE". The build maps the path
// of the source tree away.
#define TARN_LOG_STRINGIZE_(value) #value
#define TARN_LOG_STRINGIZE(value) TARN_LOG_STRINGIZE_(value)
#define TARN_LOG_LOCATION __FILE__ ":" TARN_LOG_STRINGIZE(__LINE__)
