# GoogleTest is built for Windows from its package's sources.
find_path(TRELVIN_GOOGLETEST googletest/include/gtest/gtest.h PATHS /usr/src/googletest NO_DEFAULT_PATH REQUIRED
          NO_CMAKE_FIND_ROOT_PATH)
set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory(${TRELVIN_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)

# What the tests need on the Linux side comes out of the build for Linux.
set(TRELVIN_LINUX_BUILD ${CMAKE_SOURCE_DIR}/build CACHE PATH "The build folder of the Linux build (target windows_hosts)")

# The directory service that the tests register under Wine, as a library beside the test programs that use it.
file(GLOB provider_sources CONFIGURE_DEPENDS windows/provider/*.cpp windows/provider/*.def)
add_library(directory_provider MODULE ${provider_sources})
set_target_properties(directory_provider PROPERTIES PREFIX "")
target_include_directories(directory_provider PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(directory_provider PRIVATE trelvin_windows ws2_32)

# The program's client on that service.
add_library(test_directory STATIC fakes/windows/directory_service.cpp)
target_include_directories(test_directory PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(test_directory PUBLIC trelvin_windows GTest::gtest)
add_dependencies(test_directory directory_provider)

# The installer of data sources for TrelvinSetup.exe. It lies in a folder of its own, where no other program finds it.
add_library(data_source_installer MODULE windows/installer/odbccp32.cpp windows/installer/odbccp32.def)
set_target_properties(data_source_installer PROPERTIES
  PREFIX "" OUTPUT_NAME odbccp32 LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/installer)
target_include_directories(data_source_installer PRIVATE ${CMAKE_SOURCE_DIR}/src)
target_link_libraries(data_source_installer PRIVATE trelvin_warnings)

# Gives a suite what stands behind directory service and databases. The Access driver's name leads to a driver of the
# Linux build; each suite has a folder for the driver manager's files, as it may write data sources there. Those with the
# same machine, a Windows that scripts/windows.sh prepares, wait for each other: it has one registry, one directory service
# and one set of shares.
function(use_hosts suite machine)
  set(odbc_folder ${CMAKE_BINARY_DIR}/odbc/${suite})
  file(WRITE ${odbc_folder}/odbcinst.ini
    "[Microsoft Access Driver (*.mdb)]\nDriver=${TRELVIN_LINUX_BUILD}/tests/access_driver.so\n")
  set_tests_properties(${suite} PROPERTIES RESOURCE_LOCK ${machine})
  set_property(TEST ${suite} APPEND PROPERTY
    ENVIRONMENT "TRELVIN_DIRECTORY_HOST=${TRELVIN_LINUX_BUILD}/tests/directory_host"
                "ODBCSYSINI=${odbc_folder}" "ODBCINI=${odbc_folder}/user.ini"
                "WINEPREFIX=${CMAKE_BINARY_DIR}/${machine}")
endfunction()

# Leaves out tests of a suite, given as GoogleTest's patterns.
function(leave_out suite)
  list(JOIN ARGN ":" patterns)
  set_property(TEST ${suite} APPEND PROPERTY ENVIRONMENT "GTEST_FILTER=-${patterns}")
endfunction()
