# What the program asks of a machine, done on Windows with what every Windows has.
target_link_libraries(trelvin_odbc PUBLIC odbc32)

file(GLOB windows_sources CONFIGURE_DEPENDS
  src/platform/*.cpp src/platform/shared/*.cpp src/platform/windows/*.cpp src/platform/windows/adsi/*.cpp)
add_library(trelvin_windows STATIC ${windows_sources})
target_link_libraries(trelvin_windows PUBLIC trelvin_odbc ws2_32 shell32 activeds adsiid ole32 oleaut32 uuid)
add_library(trelvin_system ALIAS trelvin_windows)
