# What the program asks of a machine, done on Linux.
target_link_libraries(trelvin_odbc PUBLIC ODBC::ODBC)
target_sources(trelvin_odbc PRIVATE src/platform/linux/odbc/driver_text.cpp)
target_include_directories(trelvin_odbc PUBLIC src/platform/linux/odbc)
if(TRELVIN_SANITIZE)
  # It keeps what it has read of odbc.ini to the end of the process. A driver that loads it takes it out of memory again,
  # and its list would then count as lost.
  target_link_options(trelvin_odbc PUBLIC -Wl,--no-as-needed,-lodbcinst)
endif()

# What every facility of the system's own files stands on.
add_library(trelvin_native STATIC src/platform/linux/native_file.cpp)
target_link_libraries(trelvin_native PUBLIC trelvin_base)

file(GLOB metabase_file_sources CONFIGURE_DEPENDS src/platform/linux/metabase/*.cpp)
add_library(trelvin_metabase_file STATIC ${metabase_file_sources})
target_link_libraries(trelvin_metabase_file PUBLIC trelvin_native PRIVATE pugixml::pugixml)
include(EmbedSchema)

file(GLOB linux_sources CONFIGURE_DEPENDS src/platform/*.cpp src/platform/shared/*.cpp src/platform/linux/*.cpp)
list(REMOVE_ITEM linux_sources ${CMAKE_SOURCE_DIR}/src/platform/linux/native_file.cpp)
add_library(trelvin_linux STATIC ${linux_sources})
target_link_libraries(trelvin_linux PUBLIC trelvin_metabase_file trelvin_odbc)
add_library(trelvin_system ALIAS trelvin_linux)
