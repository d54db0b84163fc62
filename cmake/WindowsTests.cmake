# GoogleTest is built for Windows from its package's sources.
find_path(TRELVIN_GOOGLETEST googletest/include/gtest/gtest.h PATHS /usr/src/googletest NO_DEFAULT_PATH REQUIRED
          NO_CMAKE_FIND_ROOT_PATH)
set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory(${TRELVIN_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
