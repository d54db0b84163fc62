# Warnings are errors, for every target of the project.
add_library(trelvin_warnings INTERFACE)
target_compile_options(trelvin_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wnull-dereference -Wformat=2 -Werror)
if(TRELVIN_SANITIZE)
  target_compile_options(trelvin_warnings INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer
    # The sanitizers' own instrumentation sets this warning off.
    -Wno-null-dereference -Wno-maybe-uninitialized)
  target_link_options(trelvin_warnings INTERFACE -fsanitize=address,undefined)
endif()
# At -O3, gcc 12 takes the joining of two texts in std::string itself for overlapping copies.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(trelvin_warnings INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()
