#include "app/startup.h"
#include "dialogs/look.h"

int main(int argc, char** argv)
{
    look::prepareScaling();
    Application application(argc, argv);
    return runApplication();
}
