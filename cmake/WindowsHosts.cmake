# What the tests for Windows need of the machine that Windows is emulated on (scripts/windows.sh).

# Has the metabase files for the directory provider.
add_executable(directory_host
  windows/provider_host/main.cpp windows/provider_host/served_metabase.cpp windows/provider_host/shares.cpp
  windows/provider/wire.cpp)
target_include_directories(directory_host PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(directory_host PRIVATE trelvin_linux)

# Answers to the Access driver's name. SQLite's driver has to stay linked, though no routine of it is called directly.
file(GLOB access_driver_sources CONFIGURE_DEPENDS windows/access_driver/*.cpp)
find_library(SQLITE_ODBC sqlite3odbc PATH_SUFFIXES odbc REQUIRED)
get_filename_component(sqlite_odbc_folder ${SQLITE_ODBC} DIRECTORY)
add_library(access_driver MODULE ${access_driver_sources} ${CMAKE_SOURCE_DIR}/src/platform/linux/file_text.cpp)
target_include_directories(access_driver PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/src)
set_target_properties(access_driver PROPERTIES PREFIX "" BUILD_RPATH ${sqlite_odbc_folder})
target_compile_definitions(access_driver PRIVATE SQLITE_ODBC_DRIVER="${SQLITE_ODBC}")
target_link_libraries(access_driver PRIVATE trelvin_warnings -Wl,--no-as-needed ${SQLITE_ODBC})

add_custom_target(windows_hosts DEPENDS directory_host access_driver)
