# The program for Windows: without a console, and with what Windows reads out of a program before it runs.
add_library(trelvin_resources OBJECT src/desktop/win32/trelvin.rc)
target_compile_definitions(trelvin_resources PRIVATE
  TRELVIN_VERSION_MAJOR=${PROJECT_VERSION_MAJOR} TRELVIN_VERSION_MINOR=${PROJECT_VERSION_MINOR})
set_property(SOURCE src/desktop/win32/trelvin.rc PROPERTY OBJECT_DEPENDS ${CMAKE_SOURCE_DIR}/src/desktop/win32/trelvin.ico)

add_executable(trelvin WIN32 src/main.cpp)
set_target_properties(trelvin PROPERTIES OUTPUT_NAME Trelvin)
target_link_libraries(trelvin PRIVATE trelvin_resources)

add_executable(trelvin_setup_program src/setup/windows_main.cpp)
set_target_properties(trelvin_setup_program PROPERTIES OUTPUT_NAME TrelvinSetup)
target_link_libraries(trelvin_setup_program PRIVATE trelvin_setup odbccp32)

# What a user gets: a folder that can be put anywhere.
install(TARGETS trelvin trelvin_setup_program RUNTIME DESTINATION .)
install(DIRECTORY Documentation DESTINATION .)
install(FILES data/sites-mariadb.sql data/sites-postgresql.sql DESTINATION Schemas)
install(FILES LICENSE DESTINATION . RENAME License.txt)
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME Trelvin-${PROJECT_VERSION})
include(CPack)
