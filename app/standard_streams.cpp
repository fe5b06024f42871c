#include "app/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

bool prepareStandardStreams()
{
    // Printed lines would else go into whatever file is opened next: the locked pid file, a page.
    int spare = -1;
    do {
        spare = ::open("/dev/null", O_RDWR);
    } while (spare >= 0 && spare <= STDERR_FILENO);
    if (spare > STDERR_FILENO) {
        ::close(spare);
    }
    // The signal handler writes its own line past this buffer. Later than the first output the
    // mode would not hold for what the buffer has already.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    std::signal(SIGPIPE, SIG_IGN);
    return true;
}
