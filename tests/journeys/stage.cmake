# Installs the build BUILD below the folder STAGE, which is emptied first.
file(REMOVE_RECURSE "${STAGE}")
set(ENV{DESTDIR} "${STAGE}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD}" COMMAND_ERROR_IS_FATAL ANY)
