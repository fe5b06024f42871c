// orva-sane-host: the process that SANE's drivers run in.
#include "scanlib/device/sane_host/host_program.h"

int main(int argumentCount, char** arguments)
{
    return orva::runSaneHost(argumentCount, arguments, orva::realSaneApi());
}
