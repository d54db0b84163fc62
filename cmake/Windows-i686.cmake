# Builds for Windows on another machine. The program is released in this form: the Access driver that every Windows
# brings is a 32-bit one.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(TRELVIN_MINGW i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/WindowsTools.cmake)
