#include "app/startup.h"
#include "dialogs/look.h"

#include <cstdio>

int main(int argc, char** argv)
{
    // Whole lines, also into a pipe: the signal handler writes its own line past this buffer.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    look::prepareScaling();
    Application application(argc, argv);
    return runApplication();
}
