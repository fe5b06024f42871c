// The library's own log, switched on by SetLogInfo. Never the application's run log.
#pragma once

#include <string>

namespace orva {

/// Any thread. A line is on disk when the call returns. Does nothing while the log is off; a file
/// that cannot be written is ignored.
void libraryLog(const char* format, ...) __attribute__((format(printf, 1, 2)));
/// Switches the log on (appending to the file) or off.
void setLibraryLog(bool enable, const std::string& file);

/// Lines go to this function instead, without time: in a process that is not the library's own.
void setLibraryLogSink(void (*sink)(const char* text));

} // namespace orva
