# What both forms have in common. Everything is linked in, so that the program needs nothing beyond what Windows brings.
set(CMAKE_C_COMPILER ${TRELVIN_MINGW}-gcc-posix)  # for GoogleTest alone
set(CMAKE_CXX_COMPILER ${TRELVIN_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${TRELVIN_MINGW}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${TRELVIN_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static")
endforeach()
# Windows 7 and later; their own names for a locale need it.
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0601")
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/run_under_wine.sh)
