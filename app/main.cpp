#include "app/startup.h"
#include "dialogs/look.h"

#include <QtGlobal>

int main(int argc, char** argv)
{
    // Nothing here is drawn with OpenGL; loading its drivers costs memory and time at every start.
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) {
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    }
    look::prepareScaling();
    Application application(argc, argv);
    return runApplication();
}
