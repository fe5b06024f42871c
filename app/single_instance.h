// One copy of the application at a time, by a record lock on a pid file that lasts as long as the
// process; and the pid file that the package's uninstall procedure reads. Start-up only, GUI
// thread.
#pragma once

#include <sys/types.h>

/// Path of the single-instance pid file; start-up fills it.
extern char chHomePath[256];

/// fcntl with a record lock of this description; its result.
int lock_reg(int fd, int cmd, int type, off_t offset, int whence, off_t len);

/// 0 when this process holds the lock on chHomePath from now on, 1 when another one does. A file
/// that cannot be opened ends the process with status 1. Closing any other descriptor of that file
/// releases the lock: nothing else in this process opens it.
int process_already_running();

/// Writes this process's id into the uninstall procedure's pid file. Failures go to the run log.
void process_control_uninstall();
