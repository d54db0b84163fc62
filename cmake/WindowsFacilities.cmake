# What the program asks of a machine, done on Windows with what every Windows has.

# What every facility stands on.
add_library(trelvin_native STATIC src/platform/windows/wide_text.cpp)
target_link_libraries(trelvin_native PUBLIC trelvin_base)

target_sources(trelvin_odbc PRIVATE src/platform/windows/odbc/driver_text.cpp)
target_include_directories(trelvin_odbc PUBLIC src/platform/windows/odbc)
target_link_libraries(trelvin_odbc PUBLIC trelvin_native odbc32)

file(GLOB windows_sources CONFIGURE_DEPENDS
  src/platform/*.cpp src/platform/shared/*.cpp src/platform/windows/*.cpp src/platform/windows/adsi/*.cpp)
list(REMOVE_ITEM windows_sources ${CMAKE_SOURCE_DIR}/src/platform/windows/wide_text.cpp)
add_library(trelvin_windows STATIC ${windows_sources})
target_link_libraries(trelvin_windows PUBLIC trelvin_odbc ws2_32 shell32 activeds adsiid ole32 oleaut32 uuid)
add_library(trelvin_system ALIAS trelvin_windows)
