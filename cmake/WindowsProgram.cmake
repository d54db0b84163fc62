# The programs for Windows, with what Windows reads out of a program before it runs. Behind the
# target and its script come further files that the script reads.
function(add_resources program script)
  add_library(${program}_resources OBJECT ${script})
  target_include_directories(${program}_resources PRIVATE src)
  target_compile_definitions(${program}_resources PRIVATE
    TRELVIN_VERSION_MAJOR=${PROJECT_VERSION_MAJOR} TRELVIN_VERSION_MINOR=${PROJECT_VERSION_MINOR})
  set_property(SOURCE ${script} PROPERTY OBJECT_DEPENDS
    "${CMAKE_SOURCE_DIR}/src/desktop/win32/program.rc;${CMAKE_SOURCE_DIR}/src/desktop/win32/trelvin.ico;${ARGN}")
  target_link_libraries(${program} PRIVATE ${program}_resources)
endfunction()

# Without a console.
add_executable(trelvin WIN32 src/main.cpp)
set_target_properties(trelvin PROPERTIES OUTPUT_NAME Trelvin)
add_resources(trelvin src/desktop/win32/trelvin.rc)

add_executable(trelvin_setup_program src/setup/windows_main.cpp)
set_target_properties(trelvin_setup_program PROPERTIES OUTPUT_NAME TrelvinSetup)
target_link_libraries(trelvin_setup_program PRIVATE trelvin_setup odbccp32)
add_resources(trelvin_setup_program src/setup/setup.rc ${CMAKE_SOURCE_DIR}/src/setup/setup.manifest)

# What a user gets: a folder that can be put anywhere.
install(TARGETS trelvin trelvin_setup_program RUNTIME DESTINATION .)
install(DIRECTORY Documentation DESTINATION .)
install(FILES data/sites-mariadb.sql data/sites-postgresql.sql DESTINATION Schemas)
install(FILES LICENSE DESTINATION . RENAME License.txt)
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME Trelvin-${PROJECT_VERSION})
include(CPack)
