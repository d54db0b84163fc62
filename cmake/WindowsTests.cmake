# GoogleTest is built for Windows from its package's sources.
find_path(TRELVIN_GOOGLETEST googletest/include/gtest/gtest.h PATHS /usr/src/googletest NO_DEFAULT_PATH REQUIRED
          NO_CMAKE_FIND_ROOT_PATH)
set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory(${TRELVIN_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)

# The directory service that the tests register under Wine, as a library beside the test programs that use it. What
# belongs to Linux in it, and stands behind the Access driver's name, comes out of the Linux build.
set(TRELVIN_LINUX_BUILD ${CMAKE_SOURCE_DIR}/build CACHE PATH "The build folder of the Linux build (target windows_hosts)")
file(GLOB provider_sources CONFIGURE_DEPENDS windows/provider/*.cpp windows/provider/*.def)
add_library(directory_provider MODULE ${provider_sources})
set_target_properties(directory_provider PROPERTIES PREFIX "")
target_include_directories(directory_provider PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(directory_provider PRIVATE trelvin_windows ws2_32)

# Gives a suite the client on that service, and starts the provider's host for it.
function(use_directory_provider suite)
  target_sources(${suite}_tests PRIVATE fakes/windows/directory_service.cpp)
  add_dependencies(${suite}_tests directory_provider)
  set_property(TEST ${suite} APPEND PROPERTY
    ENVIRONMENT "TRELVIN_DIRECTORY_HOST=${TRELVIN_LINUX_BUILD}/tests/directory_host")
endfunction()
