// The standard streams of a program that prints progress lines all day and may be started from
// anywhere: a desktop, a pipe, a service.
#pragma once

/// Lines come out whole and at once, also into a pipe or a file; a reader that goes away does not
/// end the application; a descriptor from 0 to 2 that nobody opened is never given to another
/// file. Before anything prints or opens a file. Gives true, so that it can start a global object.
bool prepareStandardStreams();
