# Builds for Windows on another machine. The tests run in this form: Wine brings no 32-bit part there.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TRELVIN_MINGW x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/WindowsTools.cmake)
