// A scanner library for the tests: a real shared object behind the entry points of
// sdk/entry_points.def, that does what a script tells and remembers every call. The test process
// steers it with the class FakeSdk (fake_sdk_control.h).
//
// Variants (files in <build>/tests/fake_sdk): libfake_orva_complete.so,
// libfake_orva_without_optional.so (the optional entries are missing), libfake_orva_without_scan.so
// (no Scan), libfake_orva_no_devices.so (complete, empty device list).
//
// What it offers at first stands in fake_script.cpp, in the form of a script: one device "Orvascan
// A300", three sources, papers, resolutions, paper in the feeder, and a job of one sheet.
//
// A script is lines of fields divided by "|"; an unknown line ends the process with a message on
// standard error, so that no test passes by a typing error:
//
//   reset                           the first state, recorded calls forgotten, a running job ended
//   devices|clear                   and   device|NAME|VIDPID|SN|VERSION1|VERSION2|CLASS
//   sources|clear                   and   source|NAME
//   papers|clear                    and   paper|NAME|LEFT|TOP|WIDTH|HEIGHT     millimetres
//   resolutions|clear               and   resolution|NAME|X|Y
//       "paper@1|..." and "resolution@1|..." belong to source index 1 only; a source that has some
//       of its own shows none of the common ones
//   filetypes|clear                 and   filetype|BRIGHTNESS|CONTRAST|THRESHOLD|GAMMA10
//   json|TEXT                       what GetDevInfo writes (the rest of the line, may hold "|");
//                                   a text of SIZE bytes or more is cut at SIZE - 1
//   json-unterminated|TEXT          the same, but all SIZE bytes are used and no end is written
//   times|SLEEP|AUTOOFF             what GetScannerSleepTime answers
//   havepaper|N                     what HavePaper answers
//   button|N                        one more press: GetButtonStatus answers it once, then 0 again
//                                   (always 0 while a job runs)
//   result|ENTRY|CODE               ENTRY answers CODE and does nothing else (Scan runs its job
//   result|ENTRY|CODE|TIMES         first); with TIMES only so often
//   delay|ENTRY|MS                  ENTRY waits before it does anything
//   job|clear                       the steps of the next jobs; each job plays them all:
//   step|state|STATE|PAGE|FILE      state callback, FILE may be empty
//   step|image|NAME|WIDTH|HEIGHT    writes a picture of that name into FileParam::szFilePath,
//                                   then the state callback with state 2 and its full path
//   step|error|CODE                 error callback
//   step|wait                       until release or CancelScan
//   job|end-twice, job|no-end       faults; normally state -1 is reported once, after the last step
//   release                         the job that waits, or the next wait, goes on
//   fire|state|STATE|PAGE|FILE      a callback outside any job, from a thread of the library
//   fire|error|CODE
//
// Jobs: Scan plays the steps on a thread of the library and returns when the last callback has
// returned: 0, -44 after CancelScan (steps left are skipped, state -1 is still reported), -14 while
// another job runs, or what "result|Scan|..." says.
#pragma once

#include <string>
#include <vector>

struct FakeCall
{
    std::string entry; ///< symbol of the library
    /// As texts; a record as its bytes, what the library fills in as "-", pointers "set" or "null".
    std::vector<std::string> arguments;
};

extern "C" {
/// Executes script lines. Any thread.
void fake_script(const char* lines);
/// All calls since the last reset.
void fake_calls(std::vector<FakeCall>* calls);
/// 1 while a job runs.
int fake_is_scanning();
}
